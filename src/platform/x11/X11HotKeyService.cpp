#include "platform/x11/X11HotKeyService.h"
#include "platform/x11/X11KeyboardLayout.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"

namespace orlo::x11 {

static quint64 flagsFromCarbon(quint32 carbon)
{
    quint64 f = 0;
    if (carbon & HotKeyModifier::Command) f |= ModifierFlag::Command;
    if (carbon & HotKeyModifier::Shift) f |= ModifierFlag::Shift;
    if (carbon & HotKeyModifier::Option) f |= ModifierFlag::Option;
    if (carbon & HotKeyModifier::Control) f |= ModifierFlag::Control;
    return f;
}

X11HotKeyService::X11HotKeyService(XConnection& x, X11KeyboardLayout& layout, QObject* parent)
    : HotKeyService(parent), x_(x), layout_(layout), grab_(x)
{
    listener_ = x_.addListener([this](xcb_generic_event_t* e) { onEvent(e); });
    connect(&x_, &XConnection::keymapChanged, this, &X11HotKeyService::regrabAll);
}

X11HotKeyService::~X11HotKeyService()
{
    x_.removeListener(listener_);
}

bool X11HotKeyService::registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers)
{
    const KeyCombo combo{keyCode, flagsFromCarbon(carbonModifiers)};
    // Like the system's own registry, one combination belongs to one registration.
    for (const KeyCombo& existing : std::as_const(combos_))
        if (existing == combo) return false;
    if (!grab_.grab(combo, false)) return false;
    // A grab the server granted may still never see the key.
    if (grab_.heldThroughXInput(combo)) {
        grab_.ungrab(combo);
        return false;
    }
    combos_.insert(id, combo);
    return true;
}

bool X11HotKeyService::isHeldByAnotherApp(quint32 keyCode, quint32 carbonModifiers)
{
    return grab_.heldThroughXInput({keyCode, flagsFromCarbon(carbonModifiers)});
}

void X11HotKeyService::unregisterHotKey(quint32 id)
{
    if (auto it = combos_.find(id); it != combos_.end()) {
        grab_.ungrab(*it);
        combos_.erase(it);
        if (holding_ && holding_->first == id) holding_.reset();
    }
}

void X11HotKeyService::regrabAll()
{
    // The modifier bits, or the key codes, may have moved: every grab is released as it was
    // made and made again on the same physical key.
    grab_.regrabAll();
}

void X11HotKeyService::onEvent(xcb_generic_event_t* event)
{
    const quint8 type = event->response_type & 0x7f;
    if (type == XCB_KEY_RELEASE) {
        const xcb_keycode_t key = reinterpret_cast<xcb_key_release_event_t*>(event)->detail;
        down_.remove(key);
        // The server lets go of the keyboard with the hot key's own key.
        if (holding_ && holding_->second == key) holding_.reset();
        return;
    }
    if (type != XCB_KEY_PRESS) return;
    auto* press = reinterpret_cast<xcb_key_press_event_t*>(event);
    if (press->event != x_.root() || x_.keyboardHeldByTap()) return;
    for (auto it = combos_.cbegin(); it != combos_.cend(); ++it) {
        if (!grab_.matches(*it, press->detail, press->state)) continue;
        if (down_.contains(press->detail)) return;
        down_.insert(press->detail);
        holding_ = {it.key(), press->detail};
        emit pressed(it.key());
        return;
    }
    // Any other key reaches Orlo only while a hot key's press holds the keyboard; the hot
    // key's own key repeats while held.
    if (!holding_ || holding_->second == press->detail) return;
    if (const auto keyCode = canonicalKeyCode(press->detail))
        emit pressedWhileHeld(holding_->first, KeyEvent{KeyEventType::KeyDown, *keyCode, grab_.flags(press->state), false,
                                                        layout_.text(press->detail, press->state)});
}

}  // namespace orlo::x11
