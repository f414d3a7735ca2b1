#include "TestKeys.h"
#include "FakeServices.h"
#include "kit/Defaults.h"
#include "kit/OrloContext.h"
#include "kit/Permissions.h"
#include "input/HotKeys.h"
#include "windows/SnapAction.h"
#include "windows/SnapSettings.h"
#include "windows/WindowsModule.h"
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
const Shortcut leftKey{KeyCode::LeftArrow, ControlOption};
const Shortcut rightKey{KeyCode::RightArrow, ControlOption};
const Shortcut restoreKey{KeyCode::Delete, ControlOption};
const Shortcut nextDisplayKey{KeyCode::RightArrow, ControlOption | ModifierFlag::Command};
const Shortcut gridKey{KeyCode::A, ControlOption};
const AppInfo editor{101, "org.example.Editor", "Editor"};
const AppInfo viewer{102, "org.example.Viewer", "Viewer"};

ScreenInfo screen(quint32 id, QRectF frame, QRectF visible, bool builtIn = false)
{
    return ScreenInfo{frame, visible, id, builtIn, {}};
}

// Screen coordinates: a 1440x900 laptop screen (menu bar 25 points) and a 3440x1440
// ultrawide to its right, tops aligned. In top-left coordinates the laptop's usable area is
// (0, 25, 1440, 875) and the ultrawide's (1440, 0, 3440, 1440).
struct WindowsModuleFixture : fakes::FakeServices, ::testing::Test {
    std::unique_ptr<WindowsModule> module;
    fakes::FakeWindowServer& windows = *platform.fakeWindows;

    WindowsModuleFixture()
    {
        platform.fakeScreens->list = {screen(1, QRectF(0, 0, 1440, 900), QRectF(0, 0, 1440, 875), true),
                                      screen(2, QRectF(1440, -540, 3440, 1440), QRectF(1440, -540, 3440, 1440))};
        platform.fakeWorkspace->front = editor;
    }
    void start()
    {
        module = std::make_unique<WindowsModule>(context);
        module->start();
    }
    WindowId focusedWindow(qint64 pid, QRectF frame)
    {
        const WindowId id = windows.add(pid, frame);
        windows.active = id;
        return id;
    }
    QRectF frame(WindowId id) { return windows.windowsById[id].frame; }
    // Presses a shortcut as the hot-key service would.
    void press(const Shortcut& s)
    {
        for (auto it = platform.fakeHotKeys->registered.cbegin(); it != platform.fakeHotKeys->registered.cend(); ++it)
            if (it.value() == qMakePair(s.keyCode, s.carbonModifiers())) platform.fakeHotKeys->press(it.key());
    }
};
}  // namespace

TEST_F(WindowsModuleFixture, LeftHalfKeyCyclesHalfTwoThirdsThirdOnALaptopScreen)
{
    start();
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    QList<QRectF> seen;
    for (int i = 0; i < 4; ++i) {
        press(leftKey);
        seen << frame(w);
    }
    EXPECT_EQ(seen, (QList<QRectF>{{0, 25, 720, 875}, {0, 25, 960, 875}, {0, 25, 480, 875}, {0, 25, 720, 875}}));
    // Within 8 points of an area still counts as standing in it.
    windows.windowsById[w].frame = QRectF(6, 31, 726, 869);
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(0, 25, 960, 875));
    // Moved away by hand, the window starts the cycle again.
    windows.windowsById[w].frame = QRectF(300, 200, 960, 875);
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(0, 25, 720, 875));
}

TEST_F(WindowsModuleFixture, UltrawideStartsWithAThirdAndAStoredPresetOverridesTheFallback)
{
    start();
    const WindowId w = focusedWindow(editor.pid, QRectF(2000, 200, 800, 600));
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(1440, 0, 1147, 1440));
    module->settings().setRule(SnapScreenKind::ultrawide, SnapAreaSet::halves);
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(1440, 0, 1720, 1440));
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(1440, 0, 1720, 1440));
}

TEST_F(WindowsModuleFixture, ASharedShortcutIsOneHotKeyAndAnOtherActionOnItWins)
{
    start();
    // Left third joins the left half key: its cycle on a laptop is unchanged by it.
    module->settings().setShortcut(leftKey, SnapArea::leftThird);
    const int keys = platform.fakeHotKeys->registered.size();
    EXPECT_EQ(keys, SnapAction::count - 1);
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    press(leftKey);
    press(leftKey);
    EXPECT_EQ(frame(w), QRectF(0, 25, 960, 875));

    module->settings().setShortcut(leftKey, SnapAction::restore);
    press(leftKey);  // restores instead of snapping
    EXPECT_EQ(frame(w), QRectF(100, 100, 400, 300));
}

TEST_F(WindowsModuleFixture, RestoreReturnsToTheFrameBeforeTheFirstSnapOnce)
{
    start();
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    press(leftKey);
    press(rightKey);
    press(nextDisplayKey);
    press(restoreKey);
    EXPECT_EQ(frame(w), QRectF(100, 100, 400, 300));
    windows.windowsById[w].frame = QRectF(5, 5, 50, 50);
    press(restoreKey);
    EXPECT_EQ(frame(w), QRectF(5, 5, 50, 50));
}

TEST_F(WindowsModuleFixture, NextDisplayKeepsThePlaceWithinTheUsableAreaAndWraps)
{
    start();
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    press(leftKey);
    press(nextDisplayKey);
    EXPECT_EQ(frame(w), QRectF(1440, 0, 1720, 1440));
    press(nextDisplayKey);
    EXPECT_EQ(frame(w), QRectF(0, 25, 720, 875));
    // Too big for the smaller screen, and partly off it: kept wholly inside.
    windows.windowsById[w].frame = QRectF(3000, -300, 3440, 720);
    press(Shortcut{KeyCode::LeftArrow, ControlOption | ModifierFlag::Command});
    EXPECT_EQ(frame(w), QRectF(0, 25, 1440, 438));
}

TEST_F(WindowsModuleFixture, OwnWindowsAreNeverTheTargetTheLastOtherApplicationIs)
{
    start();
    const WindowId mine = windows.add(platform.workspace->ownPid(), QRectF(50, 50, 500, 400));
    const WindowId theirs = windows.add(editor.pid, QRectF(100, 100, 400, 300));
    platform.fakeWorkspace->activate(editor);
    platform.fakeWorkspace->activate(AppInfo{platform.workspace->ownPid(), "orlo", "Orlo"});
    windows.active = mine;
    press(leftKey);
    EXPECT_EQ(frame(mine), QRectF(50, 50, 500, 400));
    EXPECT_EQ(frame(theirs), QRectF(0, 25, 720, 875));  // no focused window: the first one
}

TEST_F(WindowsModuleFixture, WindowsThatCannotBeReadAreLeftAlone)
{
    start();
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    windows.windowsById[w].readable = false;
    press(leftKey);
    press(restoreKey);
    press(nextDisplayKey);
    EXPECT_EQ(windows.setFrameCalls, 0);
    windows.close(w);
    press(leftKey);
    EXPECT_EQ(windows.setFrameCalls, 0);
}

TEST_F(WindowsModuleFixture, WithNoApplicationInFrontNothingMoves)
{
    platform.fakeWorkspace->front.reset();
    start();
    focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    press(leftKey);
    press(gridKey);
    EXPECT_EQ(windows.setFrameCalls, 0);
}

TEST_F(WindowsModuleFixture, GridArrangesTheTargetsWindowsOnItsScreenInReadingOrder)
{
    // A 16:10 usable area.
    platform.fakeScreens->list[1].visibleFrame = QRectF(1440, -540, 1600, 1000);
    start();
    const WindowId a = windows.add(editor.pid, QRectF(2000, 500, 300, 200));
    const WindowId b = windows.add(editor.pid, QRectF(1500, 100, 300, 200));
    const WindowId c = windows.add(editor.pid, QRectF(1900, 100, 300, 200));
    const WindowId d = windows.add(viewer.pid, QRectF(1600, 300, 300, 200));
    const WindowId elsewhere = windows.add(editor.pid, QRectF(100, 100, 300, 200));
    const WindowId dialog = windows.add(editor.pid, QRectF(1700, 300, 300, 200), false);
    windows.active = a;
    module->settings().setGap(10);
    press(gridKey);
    // Top-left coordinates of the usable area: (1440, 440, 1600, 1000).
    EXPECT_EQ(frame(b), QRectF(1450, 450, 785, 485));
    EXPECT_EQ(frame(c), QRectF(2245, 450, 785, 485));
    EXPECT_EQ(frame(a), QRectF(1450, 945, 1580, 485));  // the third spans the last row
    EXPECT_EQ(frame(d), QRectF(1600, 300, 300, 200));
    EXPECT_EQ(frame(elsewhere), QRectF(100, 100, 300, 200));
    EXPECT_EQ(frame(dialog), QRectF(1700, 300, 300, 200));

    module->settings().setAutoLayoutAllApps(true);
    press(gridKey);
    EXPECT_EQ(frame(d), QRectF(1450, 450, 785, 485));
    EXPECT_EQ(frame(b), QRectF(2245, 450, 785, 485));
    EXPECT_EQ(frame(c), QRectF(1450, 945, 785, 485));
    EXPECT_EQ(frame(a), QRectF(2245, 945, 785, 485));
    press(restoreKey);
    EXPECT_EQ(frame(a), QRectF(2000, 500, 300, 200));
}

TEST_F(WindowsModuleFixture, RefusedShortcutsAreKnownAndRecordingLetsTheHotKeysGo)
{
    platform.fakeHotKeys->refusedKeyCodes = {KeyCode::A};
    start();
    QSignalSpy changed(module.get(), &WindowsModule::hotKeysChanged);
    EXPECT_TRUE(module->isRefused(gridKey));
    EXPECT_FALSE(module->isRefused(leftKey));

    module->settings().startRecording(SnapArea::center);
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());
    module->settings().recordKey(KeyCode::Delete, 0);
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), SnapAction::count - 2);
    module->settings().setShortcut(Shortcut{7, ControlOption}, SnapAction::autoLayout);
    EXPECT_FALSE(module->isRefused(gridKey));
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), SnapAction::count - 1);
    EXPECT_EQ(changed.count(), 2);

    module->stop();
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());
    module->settings().setShortcut(leftKey, SnapArea::rightHalf);
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());
}

TEST_F(WindowsModuleFixture, TerminalsThatGrowInStepsCycleAndFullScreenWindowsStay)
{
    start();
    // 9 by 20 pixel character cells: no area's height fits, and 875 is 15 short of one.
    const WindowId terminal = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    windows.windowsById[terminal].step = QSizeF(9, 20);
    QList<QRectF> seen;
    for (int i = 0; i < 4; ++i) {
        press(leftKey);
        seen << frame(terminal);
    }
    EXPECT_EQ(seen, (QList<QRectF>{{0, 25, 720, 860}, {0, 25, 954, 860}, {0, 25, 477, 860}, {0, 25, 720, 860}}));

    const WindowId video = focusedWindow(viewer.pid, QRectF(0, 0, 1440, 900));
    windows.windowsById[video].fullScreen = true;
    platform.fakeWorkspace->activate(viewer);
    press(leftKey);
    press(nextDisplayKey);
    EXPECT_EQ(frame(video), QRectF(0, 0, 1440, 900));
}

TEST_F(WindowsModuleFixture, GridLeavesWindowsOfOtherDesktopsAlone)
{
    platform.fakeScreens->list[1].visibleFrame = QRectF(1440, -540, 1600, 1000);
    start();
    const WindowId a = windows.add(editor.pid, QRectF(1500, 100, 300, 200));
    const WindowId b = windows.add(editor.pid, QRectF(2000, 100, 300, 200));
    const WindowId away = windows.add(editor.pid, QRectF(1700, 600, 300, 200));
    windows.windowsById[away].onCurrentDesktop = false;
    windows.active = a;
    press(gridKey);
    EXPECT_EQ(frame(a), QRectF(1440, 440, 800, 1000));
    EXPECT_EQ(frame(b), QRectF(2240, 440, 800, 1000));
    EXPECT_EQ(frame(away), QRectF(1700, 600, 300, 200));
}

TEST_F(WindowsModuleFixture, TakenShortcutsAreReportedUnderTheirActionsAndWithdrawnOnStop)
{
    platform.fakeHotKeys->refusedKeyCodes = {KeyCode::LeftArrow};
    start();
    // Left half and previous display share the refused key; each is named.
    QStringList actions;
    for (const HotKeys::Taken& t : hotKeys.taken()) {
        EXPECT_EQ(t.page, "windows");
        EXPECT_EQ(t.shortcut.keyCode, KeyCode::LeftArrow);
        actions << t.action;
    }
    EXPECT_EQ(actions, (QStringList{"Left half", "Previous display"}));
    module->stop();
    EXPECT_TRUE(hotKeys.taken().isEmpty());
}

TEST_F(WindowsModuleFixture, CommandsActAsTheirShortcutsAndSayWhenSnappingIsOff)
{
    module = std::make_unique<WindowsModule>(context);
    EXPECT_FALSE(module->runCommand(SnapArea::leftHalf).isEmpty()) << "a stopped module says so";
    module->start();
    const WindowId w = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    QList<QRectF> seen;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(module->runCommand(SnapArea::leftHalf), QString());
        seen << frame(w);
    }
    EXPECT_EQ(seen, (QList<QRectF>{{0, 25, 720, 875}, {0, 25, 960, 875}, {0, 25, 480, 875}}));
    module->runCommand(SnapAction::restore);
    EXPECT_EQ(frame(w), QRectF(100, 100, 400, 300));
}

namespace {
// What xfwm4 and metacity keep: Control-Alt-arrows; mutter keeps Control-Alt-Super-arrows too.
constexpr quint32 ControlAltCarbon = 0x1800, ControlAltSuperCarbon = 0x1900;
QSet<QPair<quint32, quint32>> arrows(quint32 carbon)
{
    return {{KeyCode::LeftArrow, carbon}, {KeyCode::RightArrow, carbon}, {KeyCode::UpArrow, carbon}, {KeyCode::DownArrow, carbon}};
}
}  // namespace

TEST_F(WindowsModuleFixture, TheFirstWhollyFreeSetIsOfferedAndUsingItFreesEveryKeyForGood)
{
    platform.fakeHotKeys->refusedCombos = arrows(ControlAltCarbon);
    start();
    for (const HotKeys::Taken& t : hotKeys.taken()) EXPECT_TRUE(t.command.startsWith("orlo snap ")) << qPrintable(t.command);
    EXPECT_EQ(hotKeys.taken().first().command, "orlo snap left-half");
    const SnapKeySet first = SnapKeySet::alternatives().first();
    ASSERT_TRUE(module->freeKeySet());
    EXPECT_EQ(module->freeKeySet()->modifiers, first.modifiers);
    // The trials are let go: Orlo holds only its own keys.
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), SnapAction::count - 4);

    module->useFreeKeys();
    EXPECT_TRUE(hotKeys.taken().isEmpty());
    EXPECT_FALSE(module->freeKeySet());
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), SnapAction::count);
    const WindowId window = focusedWindow(editor.pid, QRectF(100, 100, 400, 300));
    press(first.shortcut(SnapArea::leftHalf));
    EXPECT_EQ(frame(window), QRectF(0, 25, 720, 875));

    SnapSettings restarted(defaults);
    EXPECT_EQ(restarted.shortcuts(), first.shortcuts());
}

TEST_F(WindowsModuleFixture, ASetWithOneTakenKeyIsPassedOverAndWithNoneFreeNoneIsOffered)
{
    platform.fakeHotKeys->refusedCombos = arrows(ControlAltCarbon) + arrows(ControlAltSuperCarbon);
    start();
    ASSERT_TRUE(module->freeKeySet());
    EXPECT_EQ(module->freeKeySet()->modifiers, SnapKeySet::alternatives().at(1).modifiers);
    EXPECT_TRUE(module->freeKeysDescription().startsWith(
        SnapKeySet::alternatives().at(1).shortcut(SnapArea::leftHalf).label(*platform.keyboardLayout) + " for Left half"))
        << qPrintable(module->freeKeysDescription());

    module->stop();
    platform.fakeHotKeys->refusedKeyCodes = {KeyCode::Return};
    module->start();
    EXPECT_FALSE(module->freeKeySet());
    EXPECT_TRUE(module->freeKeysDescription().isEmpty());
    module->useFreeKeys();  // nothing to switch to
    EXPECT_EQ(module->settings().shortcuts(), SnapSettings::defaultShortcuts());
}
