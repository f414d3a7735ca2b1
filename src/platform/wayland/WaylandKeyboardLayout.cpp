#include "platform/wayland/WaylandKeyboardLayout.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/linux/XkbText.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/XkbKeyEvents.h"
#include <wayland-client.h>

namespace orlo::wayland {

namespace {
void ignoreEnter(void*, wl_keyboard*, uint32_t, wl_surface*, wl_array*) {}
void ignoreLeave(void*, wl_keyboard*, uint32_t, wl_surface*) {}
void ignoreKey(void*, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t) {}
void ignoreRepeat(void*, wl_keyboard*, int32_t, int32_t) {}
}  // namespace

WaylandKeyboardLayout::WaylandKeyboardLayout(WaylandConnection& connection)
    : context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    // Orlo's own connection has no windows, so its keyboard never has the focus: it only
    // hears of keymaps. A seat has keyboards once the first is plugged in.
    auto follow = [this, &connection](quint32 capabilities) {
        static const wl_keyboard_listener listener = {&onKeymap, ignoreEnter, ignoreLeave, ignoreKey, &onModifiers, ignoreRepeat};
        if (keyboard_ || !connection.seat() || !(capabilities & WL_SEAT_CAPABILITY_KEYBOARD)) return;
        keyboard_ = wl_seat_get_keyboard(connection.seat());
        wl_keyboard_add_listener(keyboard_, &listener, this);
    };
    follow(connection.seatCapabilities());
    connect(&connection, &WaylandConnection::seatCapabilitiesChanged, this, follow);
}

WaylandKeyboardLayout::~WaylandKeyboardLayout()
{
    if (keyboard_) wl_keyboard_destroy(keyboard_);
    xkb_keymap_unref(keymap_);
    xkb_context_unref(context_);
}

void WaylandKeyboardLayout::onKeymap(void* data, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size)
{
    auto* self = static_cast<WaylandKeyboardLayout*>(data);
    xkb_keymap* keymap = readKeymap(self->context_, format, fd, size);
    if (!keymap) return;
    xkb_keymap_unref(self->keymap_);
    self->keymap_ = keymap;
    emit self->changed();
}

void WaylandKeyboardLayout::onModifiers(void* data, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t group)
{
    auto* self = static_cast<WaylandKeyboardLayout*>(data);
    if (group == self->group_) return;
    self->group_ = group;
    emit self->changed();
}

std::optional<QString> WaylandKeyboardLayout::character(quint32 keyCode)
{
    const auto code = xKeyCode(keyCode);
    if (!code || !keymap_) return std::nullopt;
    const QString text = xkbTypedText(keymap_, *code, 0, group_);
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

std::optional<KeyEvent> WaylandKeyboardLayout::keyEvent(const QKeyEvent& event) { return canonicalKeyEvent(event); }

}  // namespace orlo::wayland
