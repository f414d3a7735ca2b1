#include "FakePlatform.h"
#include "kit/Permissions.h"
#include "system/KeyboardCleaner.h"
#include "system/KeyboardOverlay.h"
#include "system/SystemAlert.h"
#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

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
    qint64 now = 5'000;

    void SetUp() override
    {
        platform.fakeAccessibility->trusted = true;
        permissions.refresh();
        cleaner = std::make_unique<KeyboardCleaner>(*platform.eventTaps, permissions, alert);
        cleaner->clock = [this] { return now; };
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
