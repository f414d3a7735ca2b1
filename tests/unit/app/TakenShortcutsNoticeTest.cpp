#include "TestKeys.h"
#include "FakePlatform.h"
#include "app/TakenShortcutsNotice.h"
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct NoticeFixture : ::testing::Test {
    fakes::FakePlatform platform;
    HotKeys hotKeys{*platform.hotKeys};
    TakenShortcutsNotice notice{hotKeys, *platform.notifications, *platform.keyboardLayout};
    fakes::FakeNotifications& shown = *platform.fakeNotifications;

    static HotKeys::Taken taken(const QString& page, const QString& action, quint32 key)
    {
        return {page, action, Shortcut{key, ControlOption}};
    }
    void settle() { QTest::qWait(TakenShortcutsNotice::SettleMs + 100); }
    QString label(quint32 key) { return Shortcut{key, ControlOption}.label(*platform.keyboardLayout); }
};
}  // namespace

TEST_F(NoticeFixture, OneNotificationOnceTheModulesAreDoneNamingAtMostFourShortcuts)
{
    hotKeys.reportTaken("windows", {taken("windows", "Left half", KeyCode::LeftArrow),
                                    taken("windows", "Right half", KeyCode::RightArrow)});
    hotKeys.reportTaken("clipboard", {taken("clipboard", "Clipboard history", 9)});
    hotKeys.reportTaken("windows", {taken("windows", "Left half", KeyCode::LeftArrow),
                                    taken("windows", "Right half", KeyCode::RightArrow),
                                    taken("windows", "Top half", KeyCode::UpArrow),
                                    taken("windows", "Bottom half", KeyCode::DownArrow)});
    EXPECT_TRUE(shown.shown.isEmpty());
    settle();
    ASSERT_EQ(shown.shown.size(), 2);
    EXPECT_EQ(shown.shown[0], "Shortcuts in use by another app");
    // The first page reported keeps its place.
    EXPECT_EQ(shown.shown[1], label(KeyCode::LeftArrow) + " Left half, " + label(KeyCode::RightArrow) + " Right half, "
                                  + label(KeyCode::UpArrow) + " Top half, " + label(KeyCode::DownArrow)
                                  + " Bottom half and 1 more do nothing: another app already uses them. Click to "
                                    "switch to free keys, or to copy their commands for your desktop's keyboard "
                                    "settings.");

    // Later changes (the user records other keys) bring no second notification.
    hotKeys.reportTaken("windows", {taken("windows", "Center", 8)});
    settle();
    EXPECT_EQ(shown.shown.size(), 2);
}

TEST_F(NoticeFixture, AClickOpensThePageOfTheFirstTakenShortcutAndWithoutAServiceThePanelTells)
{
    QSignalSpy opened(&notice, &TakenShortcutsNotice::openRequested);
    QSignalSpy panel(&notice, &TakenShortcutsNotice::notShown);
    hotKeys.reportTaken("windows", {taken("windows", "Left half", KeyCode::LeftArrow)});
    settle();
    emit shown.clicked();
    ASSERT_EQ(opened.count(), 1);
    EXPECT_EQ(opened.first().first().toString(), "windows");
    EXPECT_EQ(panel.count(), 0);

    fakes::FakePlatform quiet;
    quiet.fakeNotifications->serviceRuns = false;
    HotKeys otherKeys{*quiet.hotKeys};
    TakenShortcutsNotice fallback{otherKeys, *quiet.notifications, *quiet.keyboardLayout};
    QSignalSpy told(&fallback, &TakenShortcutsNotice::notShown);
    otherKeys.reportTaken("windows", {taken("windows", "Left half", KeyCode::LeftArrow)});
    settle();
    ASSERT_EQ(told.count(), 1);
    EXPECT_EQ(told.first().first().toString(), "Shortcuts in use by another app: " + label(KeyCode::LeftArrow)
                                                   + " Left half does nothing: another app already uses it. Click to "
                                                     "switch to a free key, or to copy its command for your "
                                                     "desktop's keyboard settings.");
}

TEST_F(NoticeFixture, NothingTakenNothingShown)
{
    hotKeys.reportTaken("windows", {});
    hotKeys.reportTaken("windows", {taken("windows", "Left half", KeyCode::LeftArrow)});
    hotKeys.reportTaken("windows", {});
    settle();
    EXPECT_TRUE(shown.shown.isEmpty());
}

TEST_F(NoticeFixture, DesktopAdviceFollowsTheTakenShortcutsOrStandsAloneAndCanBeWithdrawn)
{
    QSignalSpy opened(&notice, &TakenShortcutsNotice::openRequested);
    hotKeys.reportAdvice("windows", "Turn the window manager's edge tiling off.");
    hotKeys.reportAdvice("clipboard", "Something else.");
    hotKeys.reportAdvice("clipboard", {});
    settle();
    ASSERT_EQ(shown.shown.size(), 2);
    EXPECT_EQ(shown.shown[0], "A desktop setting works against Orlo");
    EXPECT_EQ(shown.shown[1], "Turn the window manager's edge tiling off.");
    emit shown.clicked();
    ASSERT_EQ(opened.count(), 1);
    EXPECT_EQ(opened.first().first().toString(), "windows");

    fakes::FakePlatform other;
    HotKeys otherKeys{*other.hotKeys};
    TakenShortcutsNotice both{otherKeys, *other.notifications, *other.keyboardLayout};
    otherKeys.reportAdvice("windows", "Turn the window manager's edge tiling off.");
    otherKeys.reportTaken("clipboard", {taken("clipboard", "Clipboard history", 9)});
    settle();
    ASSERT_EQ(other.fakeNotifications->shown.size(), 2);
    EXPECT_EQ(other.fakeNotifications->shown[0], "Shortcuts in use by another app");
    EXPECT_TRUE(other.fakeNotifications->shown[1].endsWith("keyboard settings.\nTurn the window manager's edge tiling off."));
    EXPECT_EQ(both.page(), "clipboard");
}

TEST_F(NoticeFixture, DealingWithANamedShortcutTakesTheNoticeAwayOnceAndThePanelsToo)
{
    const QList<HotKeys::Taken> windows{taken("windows", "Left half", KeyCode::LeftArrow)};
    const QList<HotKeys::Taken> switcher{{"switcher", "Window Switcher", Shortcut{KeyCode::Tab, ModifierFlag::Option}}};
    hotKeys.reportTaken("windows", windows);
    hotKeys.reportTaken("switcher", switcher);
    settle();
    QSignalSpy panel(&notice, &TakenShortcutsNotice::notShown);
    hotKeys.reportTaken("windows", windows);  // the same again: nothing dealt with
    EXPECT_EQ(shown.withdrawn, 0);
    hotKeys.reportTaken("switcher", {});  // the user chose the other trigger
    hotKeys.reportTaken("switcher", switcher);
    hotKeys.reportTaken("switcher", {});
    EXPECT_EQ(shown.withdrawn, 1);
    ASSERT_EQ(panel.count(), 1);
    EXPECT_TRUE(panel.first().first().toString().isEmpty());

    fakes::FakePlatform quiet;
    quiet.fakeNotifications->serviceRuns = false;
    HotKeys otherKeys{*quiet.hotKeys};
    TakenShortcutsNotice fallback{otherKeys, *quiet.notifications, *quiet.keyboardLayout};
    QSignalSpy told(&fallback, &TakenShortcutsNotice::notShown);
    otherKeys.reportTaken("windows", windows);
    otherKeys.reportTaken("switcher", switcher);
    settle();
    otherKeys.reportTaken("windows", {});  // the user switched to free keys
    otherKeys.reportTaken("windows", windows);
    otherKeys.reportTaken("windows", {});
    ASSERT_EQ(told.count(), 2);
    EXPECT_TRUE(told.last().first().toString().isEmpty());
    EXPECT_EQ(quiet.fakeNotifications->withdrawn, 1);
}
