#pragma once
#include "input/EventTap.h"
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orlo {

class KeyboardLockWatchdog;
class KeyboardOverlay;
class Permissions;
class PowerAssertion;
class Screens;
class SystemAlert;

// Locks every key of the session while the user wipes the keyboard, with an overlay on
// every screen. Ends on a 3-second Escape hold, on "Done", or after two minutes; a watchdog
// thread ends it on time even when the GUI thread is stuck. While locked, the power and
// suspend keys are held back too, so a wiped power key does not put the machine to sleep.
class KeyboardCleaner : public QObject {
    Q_OBJECT
public:
    static constexpr int LockSeconds = 120;
    static constexpr double EscapeHoldSeconds = 3.0;
    static constexpr int TickMs = 50;
    // After a completed hold the grab stays until Escape is let go, at most this long.
    static constexpr int ReleaseWaitMs = 2000;

    KeyboardCleaner(EventTapBackend& taps, PowerAssertion& power, Screens& screens, Permissions& permissions,
                    SystemAlert& alert, QObject* parent = nullptr);
    ~KeyboardCleaner() override;

    bool isActive() const { return active_; }
    double holdProgress() const { return holdProgress_; }
    int secondsLeft() const { return secondsLeft_; }
    int overlayCount() const { return int(overlays_.size()); }
    bool waitsForEscapeRelease() const { return releaseTap_ != nullptr; }

    // What the user's switch calls: explains what is missing instead of failing silently.
    void beginWithPrompt();
    bool begin();
    // Locks or unlocks, asked for by a command: no dialog, the reason the keyboard could not
    // be locked is returned instead (empty when done).
    QString toggle();
    void end();
    void tick();

    // Milliseconds on a clock that never goes back, read on the watchdog's thread too; tests
    // move time by hand.
    std::function<qint64()> clock;

signals:
    void activeChanged(bool active);
    void holdProgressChanged(double progress);
    void secondsLeftChanged(int seconds);

private:
    void handle(KeyEventType type, const KeyEvent& event);
    void setHoldProgress(double progress);
    void setSecondsLeft(int seconds);
    void showOverlays();
    void stopReleaseTap();

    EventTapBackend& taps_;
    PowerAssertion& power_;
    Screens& screens_;
    Permissions& permissions_;
    SystemAlert& alert_;
    bool active_ = false;
    double holdProgress_ = 0;
    int secondsLeft_ = 0;
    std::unique_ptr<EventTap> tap_;
    std::unique_ptr<KeyboardLockWatchdog> watchdog_;
    std::optional<quint32> powerKeys_;
    std::unique_ptr<EventTap> releaseTap_;  // keeps the held Escape's repeats and release
    QTimer releaseWait_;
    std::vector<std::unique_ptr<KeyboardOverlay>> overlays_;
    QTimer timer_;
    qint64 startedAt_ = 0;
    std::optional<qint64> escDownAt_;
};

}  // namespace orlo
