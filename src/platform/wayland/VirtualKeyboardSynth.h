#pragma once
#include "platform/KeySynth.h"
#include <QtGlobal>
#include <memory>

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace orlo::wayland {

class WaylandConnection;

// The paste keystroke typed on a virtual keyboard of the seat. The keyboard has a keymap of
// its own, so the keys it names are the same whatever layout the user types with.
class VirtualKeyboardSynth : public KeySynth {
public:
    // nullptr when the compositor offers no virtual keyboards.
    static std::unique_ptr<VirtualKeyboardSynth> create(WaylandConnection& connection);
    ~VirtualKeyboardSynth() override;
    bool postPaste() override;
    enum class Held { Nothing, Control, Alt };
    // Presses and lets go of one key (a Linux evdev key code), with a modifier held if asked.
    bool tap(quint32 key, Held held = Held::Nothing);

private:
    VirtualKeyboardSynth(WaylandConnection& connection, zwp_virtual_keyboard_manager_v1* manager);
    bool makeKeyboard();

    WaylandConnection& connection_;
    zwp_virtual_keyboard_manager_v1* manager_;
    zwp_virtual_keyboard_v1* keyboard_ = nullptr;
    quint32 controlMask_ = 0;
    quint32 altMask_ = 0;
};

}  // namespace orlo::wayland
