#pragma once
#include "platform/Keys.h"
#include <QList>
#include <optional>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// Passive key grabs on the root window, made for every Caps Lock / Num Lock variant so
// that the lock keys never keep a combination from reaching Orlo. Each grab is remembered
// exactly as it was made, so that it can be released exactly even after the keyboard
// mapping (and with it the modifier bits) has changed.
class KeyGrab {
public:
    explicit KeyGrab(XConnection& x) : x_(x) {}
    ~KeyGrab();

    quint16 xModifiers(quint64 flags) const;
    quint64 flags(quint16 xState) const;
    // Flags after a key event: the modifier key itself counts as held after its press.
    quint64 flagsAfter(quint16 xState, quint32 keyCode, bool pressed) const;

    // False, and nothing grabbed, when the key has no X key code or another client holds it.
    bool grab(const KeyCombo& combo, bool synchronous);
    void ungrab(const KeyCombo& combo);
    // Releases every grab and makes it again with the current mapping; the combinations
    // refused this time are returned (and no longer grabbed).
    QList<KeyCombo> regrabAll();
    // Whether a key press with this X key code and state is this combination.
    bool matches(const KeyCombo& combo, xcb_keycode_t keycode, quint16 state) const;

    // Whether another client holds the combination through an XInput 2 passive grab. The X
    // server does not refuse a core grab of a key that is held that way, yet the key press
    // goes to the XInput grab: mutter and GNOME Shell take their key bindings like this.
    bool heldThroughXInput(const KeyCombo& combo);

private:
    struct Made {
        KeyCombo combo;
        xcb_keycode_t keycode;
        quint16 modifiers;
        bool synchronous;
    };
    std::vector<quint16> variants(quint16 modifiers) const;
    bool xinputReady();

    XConnection& x_;
    std::vector<Made> made_;
    std::optional<bool> xinput_;
};

}  // namespace orlo::x11
