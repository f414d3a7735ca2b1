#pragma once
#include "platform/KeyboardLayout.h"
#include <xkbcommon/xkbcommon.h>

struct wl_keyboard;

namespace orlo::wayland {

class WaylandConnection;

// Key characters from the keymap the compositor hands the seat's keyboards, which it sends
// again whenever the user changes layouts.
class WaylandKeyboardLayout : public KeyboardLayout {
    Q_OBJECT
public:
    explicit WaylandKeyboardLayout(WaylandConnection& connection);
    ~WaylandKeyboardLayout() override;
    std::optional<QString> character(quint32 keyCode) override;
    std::optional<KeyEvent> keyEvent(const QKeyEvent& event) override;

private:
    static void onKeymap(void* data, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size);
    static void onModifiers(void* data, wl_keyboard*, uint32_t serial, uint32_t depressed, uint32_t latched,
                            uint32_t locked, uint32_t group);

    wl_keyboard* keyboard_ = nullptr;
    xkb_context* context_;
    xkb_keymap* keymap_ = nullptr;
    xkb_layout_index_t group_ = 0;
};

}  // namespace orlo::wayland
