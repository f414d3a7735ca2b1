#pragma once
#include "platform/EventTapBackend.h"
#include <QList>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

// A session keyboard tap whose handler decides, per event, whether the event is swallowed
// (true) or passed on to its target (false). Kept on when the system switches it off.
class EventTap {
public:
    using Handler = std::function<bool(KeyEventType, const KeyEvent&)>;

    EventTap(EventTapBackend& backend, const QList<KeyEventType>& events, Handler handler);
    ~EventTap();

    static quint64 maskFor(const QList<KeyEventType>& events);
    quint64 mask() const { return mask_; }

    bool start();
    void stop();
    bool isRunning() const { return tap_ != nullptr; }

    // Keys the tap must see even when it does not see every key (the triggers).
    void setWatchedKeys(const QList<KeyCombo>& keys);
    // While on, every key of the session reaches the handler.
    bool setSeesAllKeys(bool on);
    // See KeyTap; nothing while the tap is stopped.
    std::optional<quint64> modifierFlags() const;
    // Safe from any thread while the tap runs; see KeyTap.
    std::optional<bool> isKeyDown(quint32 keyCode) const;
    void releaseKeyboardNow() const;

private:
    bool deliver(const KeyEvent& event);

    EventTapBackend& backend_;
    quint64 mask_;
    Handler handler_;
    std::unique_ptr<KeyTap> tap_;
    QList<KeyCombo> watched_;
    bool seesAll_ = false;
};

}  // namespace orlo
