#pragma once
#include <QtGlobal>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace orlo {

class EventTap;

// Ends the keyboard lock from a thread of its own, so that a stuck GUI thread cannot keep the
// keyboard locked: once the lock's time is up or Escape has been held long enough, it lets go
// of the keyboard at once and asks the GUI thread to end the lock. It acts a little after the
// GUI thread would, which ends the lock more gently when it can (keeping the held Escape's
// release from the windows).
class KeyboardLockWatchdog {
public:
    static constexpr int PollMs = 50;
    static constexpr int GraceMs = 250;

    // clock: milliseconds that never go back, callable from any thread.
    KeyboardLockWatchdog(const EventTap& tap, std::function<qint64()> clock, qint64 lockMs, qint64 holdMs);
    ~KeyboardLockWatchdog();

    // Watches from `startedAt` on; `fired` runs on the watchdog's thread after the release.
    void start(qint64 startedAt, std::function<void()> fired);
    void stop();

    // One look at the clock and at Escape: true when the keyboard must be let go now.
    bool mustRelease(qint64 now, std::optional<bool> escapeDown);

private:
    void run();

    const EventTap& tap_;
    std::function<qint64()> clock_;
    const qint64 lockMs_;
    const qint64 holdMs_;
    qint64 startedAt_ = 0;
    std::optional<qint64> escapeDownSince_;
    std::function<void()> fired_;
    std::mutex lock_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace orlo
