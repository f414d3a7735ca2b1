#pragma once
#include "platform/Accessibility.h"

namespace orlo::x11 {

class XConnection;

// On X11, Orlo can do its work when the server offers XTEST (to post keys) and an EWMH
// window manager runs (to list, move and activate windows).
class X11Accessibility : public Accessibility {
public:
    explicit X11Accessibility(XConnection& x);
    bool isTrusted() override;
    bool requestTrust() override { return isTrusted(); }
    void openSettings() override;

private:
    bool windowManagerRuns();

    XConnection& x_;
    bool xtest_;
};

}  // namespace orlo::x11
