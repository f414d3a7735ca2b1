#include "FakePlatform.h"
#include "kit/Permissions.h"
#include "system/KeyboardCleaner.h"
#include "system/KeyboardLockWatchdog.h"
#include "system/KeyboardOverlay.h"
#include "system/SystemAlert.h"
#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>
#include <atomic>
#include <chrono>
#include <thread>

using namespace orlo;

namespace {

struct RecordingAlert : SystemAlert {
    QStringList shown;
    bool answer = false;
    void inform(const QString& title, const QString&) override { shown << title; }
    bool ask(const QString& title, const QString&, const QString&, const QString&) override
    {
        shown << title;
        return answer;
    }
};

struct Cleaner : ::testing::Test {
    fakes::FakePlatform platform;
    Permissions permissions{*platform.accessibility};
    RecordingAlert alert;
    std::unique_ptr<KeyboardCleaner> cleaner;
    std::atomic<qint64> now{5'000};  // read by the watchdog's thread too

    void SetUp() override
    {
        platform.fakeAccessibility->trusted = true;
        permissions.refresh();
        cleaner = std::make_unique<KeyboardCleaner>(*platform.eventTaps, *platform.power, *platform.screens, permissions, alert);
        cleaner->clock = [this] { return now.load(); };
    }
    fakes::FakeKeyTap& tap() { return *platform.fakeTaps->last; }
    void advance(int ms)
    {
        for (int step = 0; step < ms; step += KeyboardCleaner::TickMs) {
            now += KeyboardCleaner::TickMs;
            cleaner->tick();
        }
    }
};

}  // namespace

TEST_F(Cleaner, BeginGrabsEveryKeyAndShowsOverlaysOnce)
{
    ASSERT_TRUE(cleaner->begin());
    EXPECT_TRUE(cleaner->begin());
    EXPECT_EQ(platform.fakeTaps->created, 1);
    EXPECT_TRUE(platform.fakeTaps->lastMask & (quint64(1) << quint32(KeyEventType::SystemDefined)))
        << "the media, volume and brightness keys are locked too";
    EXPECT_TRUE(tap().enabled);
    EXPECT_TRUE(tap().seesAll);
    EXPECT_TRUE(cleaner->isActive());
    EXPECT_EQ(cleaner->secondsLeft(), 120);
    EXPECT_EQ(cleaner->overlayCount(), QGuiApplication::screens().size());
    EXPECT_TRUE(tap().send(KeyEventType::KeyDown, KeyCode::A));
    EXPECT_TRUE(tap().send(KeyEventType::FlagsChanged, KeyCode::Shift));

    cleaner->end();
    cleaner->end();
    EXPECT_FALSE(cleaner->isActive());
    EXPECT_EQ(cleaner->overlayCount(), 0);
    EXPECT_EQ(cleaner->secondsLeft(), 120);  // keeps its last value
}

TEST_F(Cleaner, EscapeHeldThreeSecondsEndsTheLockAndAnEarlyReleaseStartsOver)
{
    ASSERT_TRUE(cleaner->begin());
    tap().send(KeyEventType::KeyDown, KeyCode::Escape);
    advance(2'000);
    EXPECT_NEAR(cleaner->holdProgress(), 2.0 / 3.0, 0.01);
    tap().send(KeyEventType::KeyUp, KeyCode::Escape);
    EXPECT_EQ(cleaner->holdProgress(), 0);

    tap().send(KeyEventType::KeyDown, KeyCode::Escape);
    advance(1'000);
    tap().send(KeyEventType::KeyDown, KeyCode::Escape);  // auto-repeat keeps the first press
    advance(1'900);
    EXPECT_TRUE(cleaner->isActive());
    advance(100);
    EXPECT_FALSE(cleaner->isActive());
    EXPECT_EQ(cleaner->holdProgress(), 0);

    // The held Escape's repeats and its release are swallowed too; then the keyboard is free.
    EXPECT_TRUE(cleaner->waitsForEscapeRelease());
    EXPECT_TRUE(tap().seesAll);
    EXPECT_TRUE(tap().send(KeyEventType::KeyDown, KeyCode::Escape));
    EXPECT_TRUE(tap().send(KeyEventType::KeyUp, KeyCode::Escape));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !cleaner->waitsForEscapeRelease(); }, 1000));
}

TEST_F(Cleaner, CountsDownAndUnlocksAfterTwoMinutes)
{
    ASSERT_TRUE(cleaner->begin());
    QList<int> shown;
    QObject::connect(cleaner.get(), &KeyboardCleaner::secondsLeftChanged, [&](int s) { shown << s; });
    advance(1'000);
    EXPECT_EQ(cleaner->secondsLeft(), 119);
    advance(118'500);
    EXPECT_EQ(cleaner->secondsLeft(), 1);
    EXPECT_TRUE(cleaner->isActive());
    advance(500);
    EXPECT_FALSE(cleaner->isActive());
    EXPECT_EQ(shown.size(), 120);  // 119 down to 0, each once
}

TEST_F(Cleaner, TheOverlaysDoneButtonEndsTheLock)
{
    ASSERT_TRUE(cleaner->begin());
    QPushButton* done = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* overlay = qobject_cast<KeyboardOverlay*>(w); overlay && overlay->isVisible())
            done = overlay->findChild<QPushButton*>("done");
    ASSERT_TRUE(done);
    done->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !cleaner->isActive(); }, 1000));
}

TEST_F(Cleaner, RefusalsAndAMissingPermissionExplainThemselvesAndChangeNothing)
{
    platform.fakeTaps->refuse = true;
    EXPECT_FALSE(cleaner->begin());
    cleaner->beginWithPrompt();
    EXPECT_EQ(alert.shown, QStringList{"Could not lock the keyboard"});
    EXPECT_FALSE(cleaner->isActive());
    EXPECT_EQ(cleaner->overlayCount(), 0);

    platform.fakeAccessibility->trusted = false;
    permissions.refresh();
    alert.answer = true;
    cleaner->beginWithPrompt();
    EXPECT_EQ(alert.shown.last(), "Keyboard cleaning needs Accessibility");
    EXPECT_EQ(platform.fakeAccessibility->prompts, 1);
    EXPECT_FALSE(cleaner->isActive());
}

TEST_F(Cleaner, TheWatchdogLetsGoOfTheKeyboardWhileTheGuiThreadIsStuck)
{
    ASSERT_TRUE(cleaner->begin());
    now += 120'000 + KeyboardLockWatchdog::GraceMs;
    // This thread is the GUI thread: it runs no events while it waits here, as if stuck.
    for (int waited = 0; tap().releasedNow == 0 && waited < 10'000; waited += 10)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(tap().releasedNow, 1);
    EXPECT_TRUE(cleaner->isActive());
    // Once the GUI thread runs again the lock ends as usual.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !cleaner->isActive(); }, 1000));
    EXPECT_EQ(platform.fakeTaps->last, nullptr) << "the tap and the keyboard are let go";
    EXPECT_EQ(cleaner->overlayCount(), 0);
}

TEST(KeyboardLockWatchdog, ReleasesAfterTheLockTimeOrAWholeEscapeHoldWithGrace)
{
    fakes::FakeEventTapBackend taps;
    EventTap tap(taps, {KeyEventType::KeyDown}, [](KeyEventType, const KeyEvent&) { return true; });
    const int grace = KeyboardLockWatchdog::GraceMs;
    KeyboardLockWatchdog watchdog(tap, [] { return qint64(0); }, 120'000, 3'000);
    EXPECT_FALSE(watchdog.mustRelease(1'000, true));
    EXPECT_FALSE(watchdog.mustRelease(3'900, true));
    EXPECT_FALSE(watchdog.mustRelease(4'000, false));  // let go early: the hold starts over
    EXPECT_FALSE(watchdog.mustRelease(5'000, true));
    EXPECT_FALSE(watchdog.mustRelease(7'000, std::nullopt));  // the system cannot tell: no change
    EXPECT_FALSE(watchdog.mustRelease(8'000 + grace - 1, true));
    EXPECT_TRUE(watchdog.mustRelease(8'000 + grace, true));

    KeyboardLockWatchdog fresh(tap, [] { return qint64(0); }, 120'000, 3'000);
    EXPECT_FALSE(fresh.mustRelease(120'000, std::nullopt));
    EXPECT_TRUE(fresh.mustRelease(120'000 + grace, std::nullopt));
}

TEST_F(Cleaner, ThePowerAndSuspendKeysAreHeldBackOnlyWhileLocked)
{
    ASSERT_TRUE(cleaner->begin());
    EXPECT_EQ(platform.fakePower->held.values(), QStringList{"keys: Keyboard locked for cleaning"});
    cleaner->end();
    EXPECT_TRUE(platform.fakePower->held.isEmpty());
}

TEST_F(Cleaner, TheBackdropIsTranslucentOnlyWhereTheDesktopBlendsWindows)
{
    auto overlaysTranslucent = [] {
        QList<bool> translucent;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* overlay = qobject_cast<KeyboardOverlay*>(w); overlay && overlay->isVisible())
                translucent << overlay->testAttribute(Qt::WA_TranslucentBackground);
        return translucent;
    };
    ASSERT_TRUE(cleaner->begin());
    EXPECT_EQ(overlaysTranslucent(), QList<bool>(cleaner->overlayCount(), true));
    cleaner->end();
    platform.fakeScreens->blends = false;
    ASSERT_TRUE(cleaner->begin());
    EXPECT_EQ(overlaysTranslucent(), QList<bool>(cleaner->overlayCount(), false));
}
