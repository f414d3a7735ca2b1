#include "platform/x11/X11KeyboardLayout.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include "platform/linux/XkbText.h"
#include <xkbcommon/xkbcommon-x11.h>

namespace orlo::x11 {

X11KeyboardLayout::X11KeyboardLayout(XConnection& x) : x_(x), context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    xkb_x11_setup_xkb_extension(x_.connection(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr);
    device_ = xkb_x11_get_core_keyboard_device_id(x_.connection());
    connect(&x_, &XConnection::keymapChanged, this, [this] {
        xkb_keymap_unref(keymap_);
        keymap_ = nullptr;
        emit changed();
    });
    connect(&x_, &XConnection::layoutGroupChanged, this, &KeyboardLayout::changed);
}

X11KeyboardLayout::~X11KeyboardLayout()
{
    xkb_keymap_unref(keymap_);
    xkb_context_unref(context_);
}

xkb_keymap* X11KeyboardLayout::keymap()
{
    if (!keymap_ && context_ && device_ >= 0)
        keymap_ = xkb_x11_keymap_new_from_device(context_, x_.connection(), device_, XKB_KEYMAP_COMPILE_NO_FLAGS);
    return keymap_;
}

std::optional<QString> X11KeyboardLayout::character(quint32 keyCode)
{
    const auto code = xKeyCode(keyCode);
    xkb_keymap* map = keymap();
    if (!code || !map) return std::nullopt;
    // The group in use changes without a keymap change, so it is read each time.
    xkb_state* state = xkb_x11_state_new_from_device(map, x_.connection(), device_);
    if (!state) return std::nullopt;
    const xkb_layout_index_t group = xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE);
    xkb_state_unref(state);
    const QString text = xkbTypedText(keymap(), *code, 0, group);
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

QString X11KeyboardLayout::text(xcb_keycode_t key, quint16 state)
{
    // A core event's state holds the real modifiers in its low byte, which an X server's
    // keymap numbers as xkbcommon does (Shift, Lock, Control, Mod1 to Mod5: Num Lock and
    // AltGr among them), and the layout group in bits 13 and 14.
    return xkbTypedText(keymap(), key, state & 0xFF, (state >> 13) & 0x3);
}

std::optional<KeyEvent> X11KeyboardLayout::keyEvent(const QKeyEvent& event) { return canonicalKeyEvent(event); }

}  // namespace orlo::x11
