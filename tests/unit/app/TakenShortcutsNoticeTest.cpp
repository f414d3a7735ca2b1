#include "FakePlatform.h"
#include "app/TakenShortcutsNotice.h"
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
constexpr quint64 ControlOption = ModifierFlag::Control | ModifierFlag::Option;

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
                                    "choose others in Orlo's settings, or free them in your desktop's keyboard "
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
                                                     "choose another in Orlo's settings, or free it in your "
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
