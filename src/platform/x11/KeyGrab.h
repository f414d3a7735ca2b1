#pragma once
#include "platform/Keys.h"
#include <optional>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// Passive key grabs on the root window, made for every Caps Lock / Num Lock variant so
// that the lock keys never keep a combination from reaching Orlo.
class KeyGrab {
public:
    explicit KeyGrab(XConnection& x) : x_(x) {}

    quint16 xModifiers(quint64 flags) const;
    quint64 flags(quint16 xState) const;
    // Flags after a key event: the modifier key itself counts as held after its press.
    quint64 flagsAfter(quint16 xState, quint32 keyCode, bool pressed) const;

    // False, and nothing grabbed, when the key has no X key code or another client holds it.
    bool grab(const KeyCombo& combo, bool synchronous);
    void ungrab(const KeyCombo& combo);
    // Whether a key press with this X key code and state is this combination.
    bool matches(const KeyCombo& combo, xcb_keycode_t keycode, quint16 state) const;

private:
    XConnection& x_;
};

}  // namespace orlo::x11
