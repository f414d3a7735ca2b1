#include "input/EventTap.h"

namespace orlo {

EventTap::EventTap(EventTapBackend& backend, const QList<KeyEventType>& events, Handler handler)
    : backend_(backend), mask_(maskFor(events)), handler_(std::move(handler))
{
}

EventTap::~EventTap() { stop(); }

quint64 EventTap::maskFor(const QList<KeyEventType>& events)
{
    quint64 mask = 0;
    for (KeyEventType t : events) {
        const auto raw = quint32(t);
        if (raw < 64) mask |= quint64(1) << raw;
    }
    return mask;
}

bool EventTap::start()
{
    if (tap_) return true;
    auto tap = backend_.createTap(mask_, [this](const KeyEvent& e) { return deliver(e); });
    if (!tap) return false;
    tap->setWatchedKeys(watched_);
    if (!tap->setEnabled(true)) return false;
    tap_ = std::move(tap);
    if (seesAll_) tap_->setSeesAllKeys(true);
    return true;
}

void EventTap::stop()
{
    if (!tap_) return;
    tap_->setSeesAllKeys(false);
    tap_->setEnabled(false);
    tap_.reset();
}

void EventTap::setWatchedKeys(const QList<KeyCombo>& keys)
{
    watched_ = keys;
    if (tap_) tap_->setWatchedKeys(keys);
}

bool EventTap::setSeesAllKeys(bool on)
{
    seesAll_ = on;
    return tap_ ? tap_->setSeesAllKeys(on) : !on;
}

std::optional<quint64> EventTap::modifierFlags() const
{
    return tap_ ? tap_->modifierFlags() : std::nullopt;
}

std::optional<bool> EventTap::isKeyDown(quint32 keyCode) const
{
    return tap_ ? tap_->isKeyDown(keyCode) : std::nullopt;
}

void EventTap::releaseKeyboardNow() const
{
    if (tap_) tap_->releaseKeyboardNow();
}

bool EventTap::deliver(const KeyEvent& event)
{
    if (event.type == KeyEventType::TapDisabledByTimeout || event.type == KeyEventType::TapDisabledByUserInput) {
        if (tap_) {
            tap_->setEnabled(true);
            if (seesAll_) tap_->setSeesAllKeys(true);
        }
        return false;
    }
    return handler_(event.type, event);
}

}  // namespace orlo
