#include "platform/wayland/VirtualKeyboardSynth.h"
#include "platform/wayland/WaylandConnection.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"
#include <QElapsedTimer>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace orlo::wayland {

namespace {
constexpr quint32 Released = 0;  // wl_keyboard key states
constexpr quint32 Pressed = 1;

quint32 modifierMask(xkb_keymap* keymap, const char* name)
{
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, name);
    return index == XKB_MOD_INVALID ? 0 : 1u << index;
}

// The keymap text of a plain US keyboard, in which the keys below mean Control, Alt and V.
QByteArray usKeymap(quint32* controlMask, quint32* altMask)
{
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!context) return {};
    const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    QByteArray text;
    if (keymap) {
        char* string = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
        text = QByteArray(string, qsizetype(strlen(string)) + 1);  // the compositor reads the final NUL too
        free(string);
        *controlMask = modifierMask(keymap, XKB_MOD_NAME_CTRL);
        *altMask = modifierMask(keymap, XKB_MOD_NAME_ALT);
        xkb_keymap_unref(keymap);
    }
    xkb_context_unref(context);
    return text;
}

quint32 now()
{
    static QElapsedTimer clock;
    if (!clock.isValid()) clock.start();
    return quint32(clock.elapsed());
}
}  // namespace

std::unique_ptr<VirtualKeyboardSynth> VirtualKeyboardSynth::create(WaylandConnection& connection)
{
    if (!connection.seat()) return nullptr;
    auto* manager = connection.bind<zwp_virtual_keyboard_manager_v1>(&zwp_virtual_keyboard_manager_v1_interface, 1);
    if (!manager) return nullptr;
    std::unique_ptr<VirtualKeyboardSynth> synth(new VirtualKeyboardSynth(connection, manager));
    // Keys sent with the keymap in one batch are lost while the compositor takes the keymap
    // in: the keyboard is made well before the first paste.
    if (!synth->makeKeyboard()) return nullptr;
    connection.roundtrip();
    return synth;
}

VirtualKeyboardSynth::VirtualKeyboardSynth(WaylandConnection& connection, zwp_virtual_keyboard_manager_v1* manager)
    : connection_(connection), manager_(manager)
{
}

VirtualKeyboardSynth::~VirtualKeyboardSynth()
{
    if (connection_.isLost()) return;
    if (keyboard_) zwp_virtual_keyboard_v1_destroy(keyboard_);
    // The manager has no destructor request: the proxy alone goes.
    wl_proxy_destroy(reinterpret_cast<wl_proxy*>(manager_));
}

bool VirtualKeyboardSynth::makeKeyboard()
{
    const QByteArray keymap = usKeymap(&controlMask_, &altMask_);
    if (keymap.isEmpty() || !controlMask_) return false;
    const int fd = memfd_create("orlo-keymap", MFD_CLOEXEC);
    if (fd < 0) return false;
    const bool written = write(fd, keymap.constData(), size_t(keymap.size())) == keymap.size();
    if (written) {
        keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_, connection_.seat());
        zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd, quint32(keymap.size()));
    }
    close(fd);
    return written;
}

bool VirtualKeyboardSynth::ready() const { return !connection_.isLost() && keyboard_; }

bool VirtualKeyboardSynth::key(quint32 code, bool pressed)
{
    zwp_virtual_keyboard_v1_key(keyboard_, now(), code, pressed ? Pressed : Released);
    return true;
}

// The seat takes the keys of one keyboard at a time, and may drop the first key of a keyboard
// it switches to: the modifiers, sent first, switch it to this one. A held modifier goes down
// as a key and as a modifier, since some programs heed only one of them.
void VirtualKeyboardSynth::modifiersHeld(Held held)
{
    const quint32 mask = held == Held::Control ? controlMask_ : held == Held::Alt ? altMask_ : 0;
    zwp_virtual_keyboard_v1_modifiers(keyboard_, mask, 0, 0, 0);
}

bool VirtualKeyboardSynth::send() { return wl_display_flush(connection_.display()) >= 0; }

}  // namespace orlo::wayland
