#include "platform/wayland/XkbKeyEvents.h"
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client-protocol.h>

namespace orlo::wayland {

namespace {
// X keycodes are evdev codes moved up by 8, as XKB keymaps number them.
constexpr quint32 EvdevOffset = 8;

// The key Qt names for what a key types, as far as the switcher's keys need it: the character
// keys by their character; the rest are known by their scan code.
int qtKey(xkb_keysym_t symbol, const QString& text)
{
    switch (symbol) {
    case XKB_KEY_Return: return Qt::Key_Return;
    case XKB_KEY_KP_Enter: return Qt::Key_Enter;
    case XKB_KEY_Escape: return Qt::Key_Escape;
    case XKB_KEY_Tab: case XKB_KEY_ISO_Left_Tab: return Qt::Key_Tab;
    case XKB_KEY_BackSpace: return Qt::Key_Backspace;
    case XKB_KEY_Alt_L: case XKB_KEY_Alt_R: return Qt::Key_Alt;
    case XKB_KEY_Shift_L: case XKB_KEY_Shift_R: return Qt::Key_Shift;
    case XKB_KEY_Control_L: case XKB_KEY_Control_R: return Qt::Key_Control;
    case XKB_KEY_Super_L: case XKB_KEY_Super_R: return Qt::Key_Meta;
    default: break;
    }
    if (text.size() == 1 && text.at(0).isPrint()) return text.at(0).toUpper().unicode();
    return Qt::Key_unknown;
}
}  // namespace

xkb_keymap* readKeymap(xkb_context* context, quint32 format, int fd, quint32 size)
{
    xkb_keymap* keymap = nullptr;
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 && size > 0 && context) {
        void* text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (text != MAP_FAILED) {
            keymap = xkb_keymap_new_from_buffer(context, static_cast<const char*>(text), strnlen(static_cast<const char*>(text), size),
                                                XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
            munmap(text, size);
        }
    }
    close(fd);
    return keymap;
}

XkbKeyEvents::XkbKeyEvents() : context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {}

XkbKeyEvents::~XkbKeyEvents()
{
    xkb_state_unref(state_);
    xkb_keymap_unref(keymap_);
    xkb_context_unref(context_);
}

void XkbKeyEvents::setKeymap(xkb_keymap* keymap)
{
    if (!keymap) return;
    xkb_state* state = xkb_state_new(keymap);
    if (!state) {
        xkb_keymap_unref(keymap);
        return;
    }
    xkb_state_unref(state_);
    xkb_keymap_unref(keymap_);
    keymap_ = keymap;
    state_ = state;
}

void XkbKeyEvents::setModifiers(quint32 depressed, quint32 latched, quint32 locked, quint32 group)
{
    if (state_) xkb_state_update_mask(state_, depressed, latched, locked, 0, 0, group);
}

Qt::KeyboardModifiers XkbKeyEvents::modifiers() const
{
    Qt::KeyboardModifiers modifiers;
    if (!state_) return modifiers;
    const auto active = [this](const char* name) { return xkb_state_mod_name_is_active(state_, name, XKB_STATE_MODS_EFFECTIVE) > 0; };
    if (active(XKB_MOD_NAME_SHIFT)) modifiers |= Qt::ShiftModifier;
    if (active(XKB_MOD_NAME_CTRL)) modifiers |= Qt::ControlModifier;
    if (active(XKB_MOD_NAME_ALT)) modifiers |= Qt::AltModifier;
    if (active(XKB_MOD_NAME_LOGO)) modifiers |= Qt::MetaModifier;
    return modifiers;
}

bool XkbKeyEvents::repeats(quint32 evdevKey) const { return keymap_ && xkb_keymap_key_repeats(keymap_, evdevKey + EvdevOffset); }

std::unique_ptr<QKeyEvent> XkbKeyEvents::keyEvent(quint32 evdevKey, bool pressed, bool repeated) const
{
    if (!state_) return nullptr;
    const xkb_keycode_t code = evdevKey + EvdevOffset;
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_, code);
    char text[64] = {};
    xkb_state_key_get_utf8(state_, code, text, sizeof text);
    const QString typed = QString::fromUtf8(text);
    const quint32 nativeModifiers = xkb_state_serialize_mods(state_, XKB_STATE_MODS_EFFECTIVE);
    return std::make_unique<QKeyEvent>(pressed ? QEvent::KeyPress : QEvent::KeyRelease, qtKey(symbol, typed), modifiers(), code,
                                       symbol, nativeModifiers, typed, repeated);
}

}  // namespace orlo::wayland
