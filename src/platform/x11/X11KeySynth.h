#pragma once
#include "platform/KeySynth.h"

namespace orlo::x11 {

class XConnection;

// Keys typed through XTEST: the X server delivers them to the focused window like real ones.
class X11KeySynth : public KeySynth {
public:
    explicit X11KeySynth(XConnection& x);
    bool postPaste() override;

private:
    XConnection& x_;
    bool xtest_;
};

}  // namespace orlo::x11
