#include "platform/wayland/EvdevKeySynth.h"
#include <linux/input-event-codes.h>

namespace orlo::wayland {

bool EvdevKeySynth::postPaste() { return tap(KEY_V, Held::Control); }

bool EvdevKeySynth::tap(quint32 key, Held held)
{
    if (!ready()) return false;
    // Nothing held to begin with: it also makes a keyboard the seat has to switch to current.
    modifiersHeld(Held::Nothing);
    const quint32 modifierKey = held == Held::Control ? KEY_LEFTCTRL : KEY_LEFTALT;
    // A key left down would go on acting for the user's own keyboard: whatever fails after a
    // press, its release is queued all the same, the key first and then the modifier.
    const bool modifierDown = held != Held::Nothing && this->key(modifierKey, true);
    if (modifierDown) modifiersHeld(held);
    const bool keyDown = (held == Held::Nothing || modifierDown) && this->key(key, true);
    bool released = !keyDown || this->key(key, false);
    if (modifierDown) {
        released = this->key(modifierKey, false) && released;
        modifiersHeld(Held::Nothing);
    }
    const bool sent = send();
    return keyDown && released && sent;
}

bool EvdevKeySynth::setKey(quint32 key, bool down, Held before, Held after)
{
    if (!ready()) return false;
    modifiersHeld(before);
    const bool queued = this->key(key, down);
    modifiersHeld(after);
    return send() && queued;
}

}  // namespace orlo::wayland
