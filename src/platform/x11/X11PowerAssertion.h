#pragma once
#include "platform/linux/DesktopPowerAssertion.h"

namespace orlo::x11 {

class XConnection;

// Beside the desktop's services, the X server's own screen saver and power saving (DPMS) are
// suspended; the server resumes both when the connection that suspended them closes.
class X11PowerAssertion : public DesktopPowerAssertion {
    Q_OBJECT
public:
    explicit X11PowerAssertion(XConnection& x, QObject* parent = nullptr) : DesktopPowerAssertion(parent), x_(x) {}

protected:
    bool suspendDisplaySaver(bool suspend) override;

private:
    XConnection& x_;
};

}  // namespace orlo::x11
