#include "platform/x11/X11EventTap.h"
#include "platform/x11/X11KeyboardLayout.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include <cstdlib>

namespace orlo::x11 {

static constexpr int RetryMs = 100;

std::unique_ptr<KeyTap> X11EventTapBackend::createTap(quint64 mask, Callback callback)
{
    return std::make_unique<X11KeyTap>(x_, layout_, mask, std::move(callback));
}

X11KeyTap::X11KeyTap(XConnection& x, X11KeyboardLayout& layout, quint64 mask, EventTapBackend::Callback callback)
    : x_(x), layout_(layout), grab_(x), mask_(mask), callback_(std::move(callback))
{
    listener_ = x_.addListener([this](xcb_generic_event_t* e) { onEvent(e); });
    retry_.setSingleShot(true);
    retry_.setInterval(RetryMs);
    connect(&retry_, &QTimer::timeout, this, [this] {
        if (enabled_) callback_(KeyEvent{.type = KeyEventType::TapDisabledByUserInput});
    });
    connect(&x_, &XConnection::keyboardMappingChanged, this, [this] {
        if (!enabled_) return;
        ungrabWatched();
        reportDisabledSoon();
    });
}

X11KeyTap::~X11KeyTap()
{
    setEnabled(false);
    x_.removeListener(listener_);
}

bool X11KeyTap::setEnabled(bool enabled)
{
    enabled_ = enabled;
    if (!enabled) {
        retry_.stop();
        setSeesAllKeys(false);
        ungrabWatched();
        return true;
    }
    // A key another client holds stays refused until the user frees it: report it instead
    // of trying again and again.
    if (!grabWatched()) {
        enabled_ = false;
        ungrabWatched();
        return false;
    }
    if (seesAll_ && !activeGrab_) setSeesAllKeys(true);
    return true;
}

void X11KeyTap::setWatchedKeys(const QList<KeyCombo>& keys)
{
    watched_ = keys;
    if (!enabled_) return;
    ungrabWatched();
    if (!grabWatched()) qWarning("Orlo: a key the keyboard tap watches is held by another program");
}

bool X11KeyTap::grabWatched()
{
    bool refused = false;
    for (const KeyCombo& combo : std::as_const(watched_)) {
        if (grabbed_.contains(combo)) continue;
        if (grab_.grab(combo, true)) grabbed_ << combo;
        else refused = true;
    }
    return !refused;
}

void X11KeyTap::ungrabWatched()
{
    for (const KeyCombo& combo : std::as_const(grabbed_)) grab_.ungrab(combo);
    grabbed_.clear();
}

bool X11KeyTap::setSeesAllKeys(bool on)
{
    seesAll_ = on;
    if (!on) {
        if (activeGrab_) {
            xcb_ungrab_keyboard(x_.connection(), XCB_CURRENT_TIME);
            x_.flush();
        }
        activeGrab_ = false;
        swallowedHeld_.clear();
        updateHolding();
        return true;
    }
    if (!enabled_) return false;
    auto* reply = xcb_grab_keyboard_reply(
        x_.connection(),
        xcb_grab_keyboard(x_.connection(), 0, x_.root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
        nullptr);
    activeGrab_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    free(reply);
    updateHolding();
    // Another client holds the keyboard (a menu is open, say): try again shortly.
    if (!activeGrab_) reportDisabledSoon();
    return activeGrab_;
}

std::optional<quint64> X11KeyTap::modifierFlags()
{
    auto* reply = xcb_query_pointer_reply(x_.connection(), xcb_query_pointer(x_.connection(), x_.root()), nullptr);
    if (!reply) return std::nullopt;
    const quint64 flags = grab_.flags(reply->mask);
    free(reply);
    return flags;
}

// Both run on a watchdog's thread: they touch nothing but the connection, which xcb keeps
// safe across threads.
std::optional<bool> X11KeyTap::isKeyDown(quint32 keyCode)
{
    const auto code = xKeyCode(keyCode);
    if (!code) return std::nullopt;
    auto* reply = xcb_query_keymap_reply(x_.connection(), xcb_query_keymap(x_.connection()), nullptr);
    if (!reply) return std::nullopt;
    const bool down = reply->keys[*code / 8] & (1 << (*code % 8));
    free(reply);
    return down;
}

// A keyboard frozen by a synchronous grab that waits for an answer is thawed too.
void X11KeyTap::releaseKeyboardNow()
{
    xcb_ungrab_keyboard(x_.connection(), XCB_CURRENT_TIME);
    xcb_allow_events(x_.connection(), XCB_ALLOW_ASYNC_KEYBOARD, XCB_CURRENT_TIME);
    xcb_flush(x_.connection());
}

void X11KeyTap::updateHolding()
{
    const bool holding = activeGrab_ || !swallowedHeld_.isEmpty();
    if (holding == holding_) return;
    holding_ = holding;
    x_.setTapHolding(holding);
}

void X11KeyTap::reportDisabledSoon()
{
    if (!retry_.isActive()) retry_.start();
}

bool X11KeyTap::deliver(KeyEventType type, quint32 keyCode, quint64 flags, bool repeat, const QString& text)
{
    if (!(mask_ & (quint64(1) << quint32(type)))) return false;
    return callback_(KeyEvent{type, keyCode, flags, repeat, text});
}

void X11KeyTap::onEvent(xcb_generic_event_t* event)
{
    const quint8 type = event->response_type & 0x7f;
    if (!enabled_ || (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)) return;
    auto* key = reinterpret_cast<xcb_key_press_event_t*>(event);
    const bool press = type == XCB_KEY_PRESS;
    const auto code = canonicalKeyCode(key->detail);
    const quint32 keyCode = code.value_or(0xFFFF);
    const bool repeat = press && down_.contains(key->detail);
    const QString text = press ? layout_.text(key->detail, key->state) : QString();
    if (press) down_.insert(key->detail);
    else down_.remove(key->detail);

    bool watchedPress = false;
    if (press && !activeGrab_)
        for (const KeyCombo& combo : std::as_const(grabbed_))
            watchedPress = watchedPress || grab_.matches(combo, key->detail, key->state);

    if (watchedPress) {
        // The keyboard is frozen until this is answered: always answer.
        const bool swallow = code && deliver(KeyEventType::KeyDown, keyCode, grab_.flags(key->state), repeat, text);
        if (swallow) swallowedHeld_.insert(key->detail);
        updateHolding();
        xcb_allow_events(x_.connection(), swallow ? XCB_ALLOW_ASYNC_KEYBOARD : XCB_ALLOW_REPLAY_KEYBOARD, key->time);
        x_.flush();
        return;
    }
    // Every other key event reaching Orlo's connection is one the tap holds the keyboard
    // for: the active grab, or the rest of a swallowed key's press.
    if (!activeGrab_ && swallowedHeld_.isEmpty()) return;
    if (!press && swallowedHeld_.remove(key->detail)) updateHolding();
    if (!code) return;
    if (KeyCode::isModifier(keyCode)) {
        deliver(KeyEventType::FlagsChanged, keyCode, grab_.flagsAfter(key->state, keyCode, press), false);
        return;
    }
    deliver(press ? KeyEventType::KeyDown : KeyEventType::KeyUp, keyCode, grab_.flags(key->state), repeat, text);
}

}  // namespace orlo::x11
