#include "platform/wayland/KeyRepeat.h"

namespace orlo::wayland {

KeyRepeat::KeyRepeat(std::function<void(quint32 key)> repeat, QObject* parent) : QObject(parent), repeat_(std::move(repeat))
{
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &KeyRepeat::fire);
}

void KeyRepeat::setPace(int ratePerSecond, int delayMs)
{
    rate_ = std::max(ratePerSecond, 0);
    delay_ = std::max(delayMs, 0);
    if (rate_ == 0) stop();
}

void KeyRepeat::pressed(quint32 key, bool repeats)
{
    // A modifier pressed while a letter is held leaves the letter repeating.
    if (!repeats) return;
    key_ = key;
    if (rate_ > 0) timer_.start(delay_);
}

void KeyRepeat::released(quint32 key)
{
    if (key == key_) stop();
}

void KeyRepeat::stop()
{
    timer_.stop();
    key_ = 0;
}

void KeyRepeat::fire()
{
    timer_.start(1000 / rate_);
    repeat_(key_);
}

}  // namespace orlo::wayland
