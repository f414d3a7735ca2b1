#pragma once
#include "platform/KeySynth.h"
#include <QtGlobal>

namespace orlo::wayland {

// Keystrokes typed on a keyboard that the compositor lets Orlo drive, key by key, by Linux
// evdev key codes: the paste shortcut (Control+V) and, for the tests' tools, single keys.
// How a key reaches the compositor is the subclass's part; the order of the keys, and that
// every key pressed is let go again, are this class's.
class EvdevKeySynth : public KeySynth {
public:
    enum class Held { Nothing, Control, Alt };
    bool postPaste() override;
    // Presses and lets go of one key, with a modifier held if asked; false when the keys
    // could not be sent.
    bool tap(quint32 key, Held held = Held::Nothing);
    // Presses or lets go of one key alone, with the modifiers held before and after it: for a
    // modifier held down across other keys.
    bool setKey(quint32 key, bool down, Held before, Held after);

protected:
    // Whether keys can be sent now.
    virtual bool ready() const = 0;
    // Queues one key going down or up; false when it could not be queued.
    virtual bool key(quint32 code, bool pressed) = 0;
    // The modifiers now held, for a keyboard whose compositor is told them apart from the keys;
    // called with Nothing before the first key of each tap.
    virtual void modifiersHeld(Held) {}
    // Sends what is queued; false when the compositor could not be reached.
    virtual bool send() = 0;
};

}  // namespace orlo::wayland
