#pragma once
#include "platform/wayland/EvdevKeySynth.h"
#include <memory>

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace orlo::wayland {

class WaylandConnection;

// The paste keystroke typed on a virtual keyboard of the seat. The keyboard has a keymap of
// its own, so the keys it names are the same whatever layout the user types with.
class VirtualKeyboardSynth : public EvdevKeySynth {
public:
    // nullptr when the compositor offers no virtual keyboards.
    static std::unique_ptr<VirtualKeyboardSynth> create(WaylandConnection& connection);
    ~VirtualKeyboardSynth() override;

protected:
    bool ready() const override;
    bool key(quint32 code, bool pressed) override;
    void modifiersHeld(Held held) override;
    bool send() override;

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
