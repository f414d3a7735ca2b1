#include "system/KeyboardCleaner.h"
#include "kit/Permissions.h"
#include "platform/PowerAssertion.h"
#include "platform/Screens.h"
#include "system/KeyboardLockWatchdog.h"
#include "system/KeyboardOverlay.h"
#include "system/SystemAlert.h"
#include "system/SystemLog.h"
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <utility>

namespace orlo {

KeyboardCleaner::KeyboardCleaner(EventTapBackend& taps, PowerAssertion& power, Screens& screens, Permissions& permissions,
                                 SystemAlert& alert, QObject* parent)
    : QObject(parent), taps_(taps), power_(power), screens_(screens), permissions_(permissions), alert_(alert)
{
    clock = [] {
        static QElapsedTimer since;
        if (!since.isValid()) since.start();
        return since.elapsed();
    };
    timer_.setInterval(TickMs);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &KeyboardCleaner::tick);
    releaseWait_.setSingleShot(true);
    releaseWait_.setInterval(ReleaseWaitMs);
    connect(&releaseWait_, &QTimer::timeout, this, &KeyboardCleaner::stopReleaseTap);
}

KeyboardCleaner::~KeyboardCleaner()
{
    end();
    stopReleaseTap();
}

void KeyboardCleaner::stopReleaseTap()
{
    releaseWait_.stop();
    if (releaseTap_) releaseTap_->stop();
    releaseTap_.reset();
}

void KeyboardCleaner::beginWithPrompt()
{
    if (active_) return;
    if (!permissions_.accessibility()) {
#ifdef Q_OS_MACOS
        const bool open = alert_.ask(tr("Keyboard cleaning needs Accessibility"),
                                     tr("Orlo blocks every key while you clean, which needs the Accessibility permission. "
                                        "Allow it in System Settings, then try again."),
                                     tr("Open System Settings"), tr("Cancel"));
#else
        const bool open = alert_.ask(
            tr("Keyboard cleaning needs Accessibility"),
            tr("Orlo blocks every key while you clean, which needs the Accessibility permission. No setting "
               "grants it on this desktop: Orlo has it while the X server offers the XTEST extension and a window "
               "manager that follows the EWMH standard runs. See what is missing, then try again."),
            tr("Show What Is Missing"), tr("Cancel"));
#endif
        if (open) permissions_.requestAccessibility();
        return;
    }
    if (begin()) return;
#ifdef Q_OS_MACOS
    alert_.inform(tr("Could not lock the keyboard"),
                  tr("macOS refused the keyboard event tap. Check the Accessibility permission and try again."));
#else
    alert_.inform(tr("Could not lock the keyboard"),
                  tr("The X server refused the keyboard grab. Close any open menu and try again."));
#endif
}

QString KeyboardCleaner::toggle()
{
    if (active_) {
        end();
        return {};
    }
#ifdef Q_OS_MACOS
    if (!permissions_.accessibility())
        return tr("Orlo blocks every key while you clean, which needs the Accessibility permission. Allow it in System "
                  "Settings, then try again.");
    if (!begin()) return tr("macOS refused the keyboard event tap. Check the Accessibility permission and try again.");
#else
    if (!permissions_.accessibility())
        return tr("Keyboard cleaning needs Accessibility, which on this desktop means the X server's XTEST extension "
                  "and a window manager that follows the EWMH standard.");
    if (!begin()) return tr("The X server refused the keyboard grab. Close any open menu and try again.");
#endif
    return {};
}

bool KeyboardCleaner::begin()
{
    if (active_) return true;
    stopReleaseTap();
    QPointer<KeyboardCleaner> self(this);
    auto tap = std::make_unique<EventTap>(
        taps_,
        QList<KeyEventType>{KeyEventType::KeyDown, KeyEventType::KeyUp, KeyEventType::FlagsChanged, KeyEventType::SystemDefined},
        [self](KeyEventType type, const KeyEvent& event) {
            if (self) self->handle(type, event);
            return true;  // every key is swallowed, whatever happens to the cleaner
        });
    if (!tap->start()) return false;
    if (!tap->setSeesAllKeys(true)) {
        tap->stop();
        return false;
    }
    tap_ = std::move(tap);
    active_ = true;
    startedAt_ = clock();
    watchdog_ = std::make_unique<KeyboardLockWatchdog>(*tap_, clock, qint64(LockSeconds) * 1000, qint64(EscapeHoldSeconds * 1000));
    // The cleaner outlives the watchdog's thread: end() and the destructor join it.
    watchdog_->start(startedAt_, [this] { QMetaObject::invokeMethod(this, &KeyboardCleaner::end, Qt::QueuedConnection); });
    powerKeys_ = power_.preventPowerKeys(tr("Keyboard locked for cleaning"));
    escDownAt_.reset();
    setHoldProgress(0);
    setSecondsLeft(LockSeconds);
    showOverlays();
    timer_.start();
    qCDebug(lcSystem, "keyboard locked");
    emit activeChanged(true);
    return true;
}

void KeyboardCleaner::end()
{
    if (!active_) return;
    active_ = false;
    watchdog_.reset();
    if (powerKeys_) power_.release(*std::exchange(powerKeys_, std::nullopt));
    if (escDownAt_) {
        // Escape is still down: its repeats and its release belong to the lock too.
        releaseTap_ = std::move(tap_);
        releaseWait_.start();
    } else {
        tap_->stop();
        tap_.reset();
    }
    timer_.stop();
    escDownAt_.reset();
    setHoldProgress(0);
    overlays_.clear();
    qCDebug(lcSystem, "keyboard unlocked");
    emit activeChanged(false);
}

void KeyboardCleaner::handle(KeyEventType type, const KeyEvent& event)
{
    if (event.keyCode != KeyCode::Escape) return;
    if (!active_) {
        // The tap is deleted outside its own callback.
        if (type == KeyEventType::KeyUp && releaseTap_) QTimer::singleShot(0, this, &KeyboardCleaner::stopReleaseTap);
        return;
    }
    if (type == KeyEventType::KeyDown) {
        if (!escDownAt_) escDownAt_ = clock();
    } else if (type == KeyEventType::KeyUp) {
        escDownAt_.reset();
        setHoldProgress(0);
    }
}

void KeyboardCleaner::tick()
{
    if (!active_) return;
    const qint64 now = clock();
    const double elapsed = double(now - startedAt_) / 1000.0;
    const int remaining = int(std::ceil(LockSeconds - elapsed));
    setSecondsLeft(std::max(remaining, 0));
    if (escDownAt_) setHoldProgress(std::min(double(now - *escDownAt_) / 1000.0 / EscapeHoldSeconds, 1.0));
    if (holdProgress_ >= 1.0 || remaining <= 0) end();
}

void KeyboardCleaner::setHoldProgress(double progress)
{
    if (progress == holdProgress_) return;
    holdProgress_ = progress;
    emit holdProgressChanged(progress);
}

void KeyboardCleaner::setSecondsLeft(int seconds)
{
    if (seconds == secondsLeft_) return;
    secondsLeft_ = seconds;
    emit secondsLeftChanged(seconds);
}

void KeyboardCleaner::showOverlays()
{
    const bool translucent = screens_.blendsWindows();
    for (QScreen* screen : QGuiApplication::screens()) {
        auto overlay = std::make_unique<KeyboardOverlay>(*this, screen->geometry(), translucent);
        connect(overlay.get(), &KeyboardOverlay::doneClicked, this, &KeyboardCleaner::end, Qt::QueuedConnection);
        overlay->present();
        overlays_.push_back(std::move(overlay));
    }
    if (!overlays_.empty()) overlays_.front()->takeFocus();
}

}  // namespace orlo
