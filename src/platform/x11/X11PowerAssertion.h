#pragma once
#include "platform/PowerAssertion.h"
#include "platform/linux/ScreenSaverInhibitor.h"
#include <QHash>

namespace orlo::x11 {

class XConnection;

// Keeps the display awake through the desktop's screen saver service, or, where no desktop
// offers one, by suspending the X server's own screen saver and power saving. Both end
// with Orlo's connections.
class X11PowerAssertion : public PowerAssertion {
public:
    explicit X11PowerAssertion(XConnection& x) : x_(x) {}
    std::optional<quint32> preventDisplaySleep(const QString& name) override;
    void release(quint32 assertion) override;

private:
    bool suspendScreenSaver(bool suspend);

    XConnection& x_;
    ScreenSaverInhibitor inhibitor_;
    QHash<quint32, std::optional<quint32>> held_;  // assertion -> D-Bus cookie, none for the X suspend
    quint32 next_ = 1;
    int suspensions_ = 0;
};

}  // namespace orlo::x11
