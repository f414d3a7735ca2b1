#include "system/KeyboardLockWatchdog.h"
#include "input/EventTap.h"
#include "platform/Keys.h"

namespace orlo {

KeyboardLockWatchdog::KeyboardLockWatchdog(const EventTap& tap, std::function<qint64()> clock, qint64 lockMs, qint64 holdMs)
    : tap_(tap), clock_(std::move(clock)), lockMs_(lockMs), holdMs_(holdMs)
{
}

KeyboardLockWatchdog::~KeyboardLockWatchdog() { stop(); }

void KeyboardLockWatchdog::start(qint64 startedAt, std::function<void()> fired)
{
    stop();
    startedAt_ = startedAt;
    escapeDownSince_.reset();
    fired_ = std::move(fired);
    stopping_ = false;
    thread_ = std::thread([this] { run(); });
}

void KeyboardLockWatchdog::stop()
{
    if (!thread_.joinable()) return;
    {
        const std::lock_guard hold(lock_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

bool KeyboardLockWatchdog::mustRelease(qint64 now, std::optional<bool> escapeDown)
{
    if (escapeDown == true && !escapeDownSince_) escapeDownSince_ = now;
    if (escapeDown == false) escapeDownSince_.reset();
    const bool timeUp = now - startedAt_ >= lockMs_ + GraceMs;
    const bool held = escapeDownSince_ && now - *escapeDownSince_ >= holdMs_ + GraceMs;
    return timeUp || held;
}

void KeyboardLockWatchdog::run()
{
    std::unique_lock hold(lock_);
    while (!wake_.wait_for(hold, std::chrono::milliseconds(PollMs), [this] { return stopping_; })) {
        hold.unlock();
        const bool release = mustRelease(clock_(), tap_.isKeyDown(KeyCode::Escape));
        if (release) {
            tap_.releaseKeyboardNow();
            fired_();
            return;
        }
        hold.lock();
    }
}

}  // namespace orlo
