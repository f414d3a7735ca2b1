#pragma once
#include "platform/Keys.h"
#include <QList>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

// One keyboard tap of the session. The callback sees each event of the mask's types and
// returns true to swallow it. When the system switches the tap off it calls back with a
// TapDisabled... event; setEnabled(true) switches it on again.
class KeyTap {
public:
    virtual ~KeyTap() = default;
    virtual bool setEnabled(bool enabled) = 0;
    // Keys the tap must see even while it does not see every key. Where the system shows a
    // tap every key anyway, this is only a hint.
    virtual void setWatchedKeys(const QList<KeyCombo>& keys) = 0;
    // While on, the tap sees every key of the session (and keeps it from other applications
    // where the system cannot pass events on).
    virtual bool setSeesAllKeys(bool on) = 0;
    // The modifier flags held on the keyboard now, as far as Orlo may know them (on Wayland,
    // only while one of its windows has the keyboard); nothing when the system cannot tell.
    virtual std::optional<quint64> modifierFlags() = 0;

    // For a watchdog on another thread, when the thread that owns the tap may be stuck: both
    // are safe to call from any thread while the tap exists.
    // Whether a key is down on the keyboard now, whatever the tap has delivered of it;
    // nothing when the system cannot tell.
    virtual std::optional<bool> isKeyDown(quint32 keyCode) = 0;
    // Lets go of the keyboard at once, so that keys reach the windows again. The owner still
    // switches the tap off as usual afterwards.
    virtual void releaseKeyboardNow() = 0;
};

class EventTapBackend {
public:
    using Callback = std::function<bool(const KeyEvent&)>;
    virtual ~EventTapBackend() = default;
    // Creates a tap, not yet enabled; nullptr when the system offers none.
    virtual std::unique_ptr<KeyTap> createTap(quint64 mask, Callback callback) = 0;
    // The taps see only the keys typed into Orlo's own windows (Wayland shows a program no
    // other keys): whatever must see every key has to be shown with the keyboard focus.
    virtual bool seesOnlyOwnWindows() const { return false; }
};

}  // namespace orlo
