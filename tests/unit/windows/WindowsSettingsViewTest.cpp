#include "TestKeys.h"
#include "FakeServices.h"
#include "kit/Defaults.h"
#include "kit/OrloContext.h"
#include "kit/Permissions.h"
#include "input/HotKeys.h"
#include "windows/SnapSettings.h"
#include "windows/WindowsModule.h"
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct WindowsSettingsViewFixture : fakes::FakeServices, ::testing::Test {
    std::unique_ptr<WindowsModule> module;
    std::unique_ptr<QWidget> view;

    WindowsSettingsViewFixture()
    {
        platform.fakeHotKeys->refusedKeyCodes = {17};  // Ctrl+Alt+T, right two-thirds, is taken
        module = std::make_unique<WindowsModule>(context);
        module->start();
        view.reset(module->settingsView());
    }
    template <typename T>
    T* find(const QString& name) { return view->findChild<T*>(name); }
    // A key typed in Orlo's window (the fake layout reads the key code and flags as given).
    void type(QWidget* target, quint32 keyCode, quint64 flags)
    {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, keyCode, 0, quint32(flags));
        QApplication::sendEvent(target, &press);
    }
};
}  // namespace

TEST_F(WindowsSettingsViewFixture, ARecordedShortcutTakesEffectAtOnceAndARefusedOneSaysSo)
{
    EXPECT_FALSE(find<QLabel>("refused.rightTwoThirds")->isHidden());
    EXPECT_TRUE(find<QLabel>("refused.center")->isHidden());

    auto* center = find<QPushButton>("shortcut.center");
    center->click();
    EXPECT_EQ(center->text(), "Type shortcut…");
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());  // let go while recording
    type(center, 9, ModifierFlag::Shift);                      // not a shortcut: recording goes on
    EXPECT_EQ(module->settings().recording(), SnapAction(SnapArea::center));
    type(center, 17, ControlOption | ModifierFlag::Shift);
    EXPECT_EQ(module->settings().shortcut(SnapArea::center), (Shortcut{17, ControlOption | ModifierFlag::Shift}));
    // The fake system refuses every combination with T: both rows say so.
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), SnapAction::count - 2);
    EXPECT_FALSE(find<QLabel>("refused.center")->isHidden());

    // Delete clears, and the row says nothing about a shortcut it no longer has.
    center->click();
    type(center, KeyCode::Delete, 0);
    EXPECT_EQ(center->text(), "None");
    EXPECT_TRUE(find<QLabel>("refused.center")->isHidden());

    find<QPushButton>("restoreDefaults")->click();
    EXPECT_EQ(module->settings().shortcuts(), SnapSettings::defaultShortcuts());
    // The fake layout has no character for C.
#ifdef Q_OS_MACOS
    EXPECT_EQ(center->text(), "⌃⌥#8");
#else
    EXPECT_EQ(center->text(), "Ctrl+Alt+#8");
#endif
}

TEST_F(WindowsSettingsViewFixture, GapGridScopeAndPresetsWriteTheirSettings)
{
    find<QSlider>("gap")->setValue(12);
    find<QComboBox>("gridScope")->setCurrentIndex(1);
    find<QComboBox>("preset.laptop")->setCurrentIndex(int(SnapAreaSet::halves));
    EXPECT_EQ(module->settings().gap(), 12);
    EXPECT_TRUE(module->settings().autoLayoutAllApps());
    EXPECT_EQ(module->settings().rule(SnapScreenKind::laptop), SnapAreaSet::halves);
    EXPECT_EQ(find<QComboBox>("preset.ultrawide")->currentIndex(), int(SnapAreaSet::thirdsFirst));
}

TEST(WindowsEdgeTiling, AWindowManagerThatTilesOnItsOwnIsNamedWhileDragToSnapIsOn)
{
    fakes::FakeServices services;
    services.platform.fakeEdgeTiling->place = "Tweaks › Edge Tiling";
    WindowsModule module(services.context);
    module.start();
    ASSERT_EQ(services.hotKeys.advice().size(), 1);
    EXPECT_TRUE(services.hotKeys.advice().first().text.contains("Turn its edge tiling off: Tweaks › Edge Tiling."));
    std::unique_ptr<QWidget> view(module.settingsView());
    EXPECT_EQ(view->findChild<QLabel*>("edgeTilingNote")->text(), services.hotKeys.advice().first().text);

    module.settings().setDragToSnap(false);
    EXPECT_TRUE(services.hotKeys.advice().isEmpty());
    module.settings().setDragToSnap(true);
    services.platform.fakeEdgeTiling->place.clear();
    module.stop();
    module.start();
    EXPECT_TRUE(services.hotKeys.advice().isEmpty());
}

// Where Orlo cannot follow the pointer (Wayland) the page says that drags are the desktop's,
// and does not ask the user to switch the desktop's own tiling off.
TEST(WindowsEdgeTiling, WhereThePointerCannotBeFollowedDragsAreLeftToTheDesktop)
{
    fakes::FakeServices services;
    services.platform.fakeMouse->followable = false;
    WindowsModule module(services.context);
    module.start();
    std::unique_ptr<QWidget> view(module.settingsView());
    EXPECT_TRUE(view->findChild<QLabel*>("edgeTilingNote")->text().contains("left to the desktop's own tiling"));
    EXPECT_FALSE(view->findChild<QWidget*>("dragToSnap")->isEnabled());
}

TEST_F(WindowsSettingsViewFixture, TakenKeysOfferTheFreeSetWhenThereIsOneAndTheirCommandsAlways)
{
    // Every set has a T, so none is free, and the page says so.
    auto* box = find<QWidget>("takenKeys");
    EXPECT_FALSE(box->isHidden());
    EXPECT_TRUE(find<QPushButton>("useFreeKeys")->isHidden());
    EXPECT_TRUE(find<QLabel>("takenKeysText")->text().contains("No other set of keys is free")) << qPrintable(find<QLabel>("takenKeysText")->text());
    find<QPushButton>("copyCommands")->click();
    EXPECT_TRUE(QGuiApplication::clipboard()->text().endsWith(":\nControl+Alt+#17: orlo snap right-two-thirds\n"))
        << qPrintable(QGuiApplication::clipboard()->text());

    module->stop();
    platform.fakeHotKeys->refusedKeyCodes = {};
    platform.fakeHotKeys->refusedCombos = {{KeyCode::LeftArrow, 0x1800}};
    module->start();
    EXPECT_FALSE(box->isHidden());
    ASSERT_FALSE(find<QPushButton>("useFreeKeys")->isHidden());
    find<QPushButton>("useFreeKeys")->click();
    const SnapKeySet first = SnapKeySet::alternatives().first();
    EXPECT_EQ(module->settings().shortcuts(), first.shortcuts());
    EXPECT_TRUE(box->isHidden());
    EXPECT_EQ(find<QPushButton>("shortcut.leftHalf")->text(), first.shortcut(SnapArea::leftHalf).label(*platform.keyboardLayout));
}
