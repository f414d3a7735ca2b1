#include "FakeServices.h"
#include "kit/AppListEditor.h"
#include "kit/ToggleSwitch.h"
#include "switcher/SwitcherHUD.h"
#include "switcher/SwitcherModule.h"
#include "switcher/SwitcherSession.h"
#include "switcher/SwitcherSettingsView.h"
#include "switcher/SwitcherView.h"
#include <QCoreApplication>
#include <QImage>
#include <QWheelEvent>
#include <QLabel>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
constexpr quint64 Option = ModifierFlag::Option, Shift = ModifierFlag::Shift, Command = ModifierFlag::Command;
constexpr quint32 F5 = 96;

struct SwitcherModuleFixture : fakes::FakeServices, ::testing::Test {
    fakes::FakeWindowCatalog& catalog = *platform.fakeCatalog;
    std::unique_ptr<SwitcherModule> module;

    SwitcherModuleFixture()
    {
        platform.fakeScreens->list = {ScreenInfo{QRectF(0, 0, 1440, 900), QRectF(0, 0, 1440, 876), 1, true, {}}};
        for (qint64 pid : {10, 20, 30}) {
            catalog.apps << RunningApp{pid, QString("org.example.App%1").arg(pid), QString("App %1").arg(pid), true};
            const quint32 number = quint32(pid * 10);
            catalog.onScreen << ScreenWindow{number, pid, 0, QRectF(0, 0, 400, 300), 1.0, QString("Window %1").arg(pid)};
            catalog.appWindows[pid] = {AppWindow{WindowId(number), number, QString("Window %1").arg(pid), QRectF(0, 0, 400, 300), false, true}};
        }
        platform.fakeWorkspace->front = AppInfo{10, "org.example.App10", "App 10"};
    }
    void start()
    {
        module = std::make_unique<SwitcherModule>(context);
        module->start();
    }
    fakes::FakeKeyTap& tap() { return *platform.fakeTaps->last; }
    bool down(quint32 keyCode, quint64 flags = Option, const QString& text = {})
    {
        const bool swallowed = tap().send(KeyEventType::KeyDown, keyCode, flags, text);
        QCoreApplication::processEvents();
        return swallowed;
    }
    bool up(quint32 keyCode)
    {
        const bool swallowed = tap().send(KeyEventType::KeyUp, keyCode, 0);
        QCoreApplication::processEvents();
        return swallowed;
    }
    void release(quint64 flags = 0)
    {
        tap().send(KeyEventType::FlagsChanged, KeyCode::Option, flags);
        QCoreApplication::processEvents();
    }
    QString selectedId() { return module->session() && module->session()->selected() ? module->session()->selected()->id : QString(); }
};
}  // namespace

TEST_F(SwitcherModuleFixture, TabOpensOnTheSecondItemAndReleaseSwitches)
{
    start();
    ASSERT_TRUE(module->isRunning());
    EXPECT_EQ(tap().watched, (QList<KeyCombo>{{KeyCode::Tab, Option}, {KeyCode::Tab, Option | Shift}}));
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty()) << "the tap holds the trigger itself";
    EXPECT_TRUE(down(KeyCode::Tab));
    EXPECT_TRUE(tap().seesAll);
    ASSERT_TRUE(module->session());
    EXPECT_TRUE(module->hud().isVisible());
    EXPECT_EQ(selectedId(), "w200");
    EXPECT_TRUE(down(KeyCode::Tab));
    EXPECT_EQ(selectedId(), "w300");
    EXPECT_TRUE(tap().send(KeyEventType::KeyUp, KeyCode::Tab, Option));
    release();
    EXPECT_FALSE(module->session());
    EXPECT_FALSE(module->hud().isVisible());
    EXPECT_FALSE(tap().seesAll) << "the keyboard is let go at commit";
    EXPECT_EQ(catalog.raised, (QList<QPair<WindowId, bool>>{{300, false}}));
    EXPECT_FALSE(tap().send(KeyEventType::KeyUp, KeyCode::A));
}

TEST_F(SwitcherModuleFixture, ShiftOpensBackwardsAndForeignModifiersPassThrough)
{
    start();
    EXPECT_FALSE(down(KeyCode::Tab, Option | Command));
    EXPECT_FALSE(module->session());
    EXPECT_FALSE(down(KeyCode::A, Option));
    EXPECT_TRUE(down(KeyCode::Tab, Option | Shift));
    EXPECT_EQ(selectedId(), "w300");
    EXPECT_TRUE(down(KeyCode::Tab, Option | Shift));
    EXPECT_EQ(selectedId(), "w200");
    EXPECT_TRUE(down(KeyCode::RightArrow));
    EXPECT_TRUE(down(KeyCode::DownArrow));
    EXPECT_EQ(selectedId(), "w100") << "wrapped around";
    EXPECT_TRUE(down(KeyCode::Escape));
    EXPECT_FALSE(module->session());
    EXPECT_FALSE(tap().seesAll);
    EXPECT_TRUE(catalog.raised.isEmpty());

    // Stopping the module or quitting Orlo while the switcher is open lets the keyboard go.
    down(KeyCode::Tab);
    module->stop();
    EXPECT_FALSE(module->hud().isVisible());
    EXPECT_FALSE(module->isActive());
    EXPECT_FALSE(module->session());
    module->start();
    down(KeyCode::Tab);
    emit events.willTerminate();
    EXPECT_EQ(platform.fakeTaps->last, nullptr) << "the tap and the keyboard are let go";
    module->stop();
    module->start();

    // Without the whole keyboard the switcher could not see the release: it does not open.
    tap().keyboardTaken = true;
    EXPECT_TRUE(down(KeyCode::Tab));
    EXPECT_FALSE(module->session());
    EXPECT_FALSE(module->isActive());
    EXPECT_FALSE(tap().seesAll);
}

TEST_F(SwitcherModuleFixture, TypingKeepsTheSwitcherOpenUntilReturn)
{
    start();
    down(KeyCode::Tab);
    EXPECT_TRUE(down(F5));  // no character: swallowed, nothing changes
    EXPECT_TRUE(module->session()->query().isEmpty());
    EXPECT_FALSE(module->session()->sticky());
    EXPECT_TRUE(down(40, Option, "k"));
    release();
    ASSERT_TRUE(module->session()) << "sticky: releasing the modifier does not switch";
    EXPECT_EQ(module->session()->query(), "k");
    // What the key typed, whole: Shift's "%" and "_", an emoji of two UTF-16 units.
    EXPECT_TRUE(down(23, Shift, "%"));
    EXPECT_TRUE(down(27, Shift, "_"));
    EXPECT_TRUE(down(0, 0, QString::fromUtf8("\xf0\x9f\x98\x80")));
    EXPECT_EQ(module->session()->query(), QString::fromUtf8("k%_\xf0\x9f\x98\x80"));
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(down(KeyCode::Delete, 0));
    EXPECT_EQ(module->session()->query(), "");
    EXPECT_TRUE(down(KeyCode::Return, 0));
    EXPECT_TRUE(module->session()) << "Return switches when it is let go, so that its release reaches no window";
    EXPECT_TRUE(up(KeyCode::Return));
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised.size(), 1);

    // Backspace on an empty search is no edit: the release switches.
    down(KeyCode::Tab);
    down(KeyCode::Delete);
    release();
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised.size(), 2);
}

TEST_F(SwitcherModuleFixture, RecentApplicationsComeFirstAndMinimizedWindowsAreRestored)
{
    catalog.appWindows[20] << AppWindow{0x777, std::nullopt, "Hidden", {}, true, true};
    start();
    EXPECT_EQ(module->appOrder(), QList<qint64>{10});
    platform.fakeWorkspace->activate(AppInfo{20, "org.example.App20", "App 20"});
    platform.fakeWorkspace->activate(AppInfo{10, "org.example.App10", "App 10"});
    EXPECT_EQ(module->appOrder(), (QList<qint64>{10, 20}));
    down(KeyCode::Tab, Option | Shift);
    EXPECT_EQ(selectedId(), "m20-0");
    EXPECT_TRUE(module->session()->selected()->isMinimized());
    release();
    EXPECT_EQ(catalog.raised, (QList<QPair<WindowId, bool>>{{0x777, true}}));

    // A window without an element of its own activates its application.
    catalog.appWindows.remove(30);
    down(KeyCode::Tab);
    down(KeyCode::Tab);
    release();
    EXPECT_EQ(catalog.activated, QList<qint64>{30});
}

TEST_F(SwitcherModuleFixture, CommandTriggerAndARefusedTap)
{
    defaults.set("switcher.trigger", "command");
    start();
    EXPECT_FALSE(down(KeyCode::Tab, Option));
    EXPECT_TRUE(down(KeyCode::Tab, Command));
    EXPECT_TRUE(module->session());
    EXPECT_TRUE(down(KeyCode::Escape, Command));

    // Switching back re-takes the keys at once; a refusal leaves the module stopped and says so.
    platform.fakeTaps->refuse = true;
    defaults.set("switcher.trigger", "option");
    EXPECT_FALSE(module->isRunning());
    EXPECT_TRUE(module->isTriggerRefused());
    std::unique_ptr<QWidget> page(module->settingsView());
    auto* refused = page->findChild<QLabel*>("triggerRefused");
    ASSERT_TRUE(refused);
    EXPECT_FALSE(refused->isHidden());
    EXPECT_TRUE(refused->text().startsWith(SwitcherModule::triggerName(SwitcherSettings::Trigger::Option) +
                                           " is taken by another program, usually the window manager"));
    // Choosing another trigger tries again.
    platform.fakeTaps->refuse = false;
    defaults.set("switcher.trigger", "command");
    EXPECT_TRUE(module->isRunning());
    EXPECT_TRUE(refused->isHidden());
    module->stop();
    EXPECT_FALSE(module->isRunning());
    EXPECT_FALSE(module->isTriggerRefused());
}

// The user frees the refused trigger in the window manager's settings and comes back to
// Orlo's page: the switcher takes the keys without a restart.
TEST_F(SwitcherModuleFixture, AFreedTriggerIsTakenWhenTheSettingsPageIsShown)
{
    platform.fakeTaps->refuse = true;
    start();
    ASSERT_TRUE(module->isTriggerRefused());
    std::unique_ptr<QWidget> page(module->settingsView());
    page->show();
    EXPECT_FALSE(module->isRunning()) << "still held elsewhere";
    page->hide();
    platform.fakeTaps->refuse = false;
    page->show();
    EXPECT_TRUE(module->isRunning());
    EXPECT_FALSE(module->isTriggerRefused());
    EXPECT_TRUE(page->findChild<QLabel*>("triggerRefused")->isHidden());
    EXPECT_TRUE(down(KeyCode::Tab));
    EXPECT_TRUE(module->session());
}

TEST_F(SwitcherModuleFixture, TheSystemSwitcherIsOffOnlyWhileTheSwitcherRunsOnTheSameKeys)
{
    fakes::FakeSystemSwitcher& system = *platform.fakeSystemSwitcher;
    start();
    EXPECT_TRUE(system.calls.isEmpty()) << "the Option trigger leaves the system switcher alone";
    defaults.set("switcher.trigger", "command");
    EXPECT_FALSE(system.enabled);
    defaults.set("switcher.trigger", "option");
    EXPECT_TRUE(system.enabled);
    defaults.set("switcher.trigger", "command");
    module->stop();
    EXPECT_TRUE(system.enabled) << "stopping gives the keys back";

    // A tap the system refused takes nothing; quitting gives back what was taken.
    platform.fakeTaps->refuse = true;
    module->start();
    EXPECT_TRUE(system.enabled);
    platform.fakeTaps->refuse = false;
    defaults.set("switcher.trigger", "option");
    defaults.set("switcher.trigger", "command");
    EXPECT_FALSE(system.enabled);
    emit events.willTerminate();
    EXPECT_TRUE(system.enabled);
    EXPECT_EQ(system.calls, (QList<bool>{false, true, false, true, false, true}));

    // Where the system offers no way, nothing is recorded and nothing is asked again in vain.
    module->stop();
    system.available = false;
    system.calls.clear();
    module->start();
    module->stop();
    EXPECT_EQ(system.calls, (QList<bool>{false}));
}

TEST_F(SwitcherModuleFixture, ATriggerHeldThroughXInputIsRefusedAndReportedWithTheOtherTakenKeys)
{
    // The window manager's passive grab lets the tap start, but its presses would never come.
    platform.fakeHotKeys->heldElsewhereKeyCodes = {KeyCode::Tab};
    start();
    EXPECT_FALSE(module->isRunning());
    EXPECT_TRUE(module->isTriggerRefused());
    EXPECT_EQ(platform.fakeTaps->created, 0);
    const HotKeys::Taken altTab{"switcher", "Window Switcher", Shortcut{KeyCode::Tab, Option}, "orlo switcher"};
    EXPECT_EQ(hotKeys.taken(), QList<HotKeys::Taken>{altTab});

    // A refused tap is reported the same way, under the trigger that was refused.
    platform.fakeHotKeys->heldElsewhereKeyCodes.clear();
    platform.fakeTaps->refuse = true;
    defaults.set("switcher.trigger", "command");
    EXPECT_EQ(hotKeys.taken(), (QList<HotKeys::Taken>{{"switcher", "Window Switcher", Shortcut{KeyCode::Tab, Command}, "orlo switcher"}}));
    platform.fakeTaps->refuse = false;
    defaults.set("switcher.trigger", "option");
    EXPECT_TRUE(module->isRunning());
    EXPECT_TRUE(hotKeys.taken().isEmpty());

    platform.fakeHotKeys->heldElsewhereKeyCodes = {KeyCode::Tab};
    defaults.set("switcher.trigger", "command");
    EXPECT_FALSE(hotKeys.taken().isEmpty());
    module->stop();
    EXPECT_TRUE(hotKeys.taken().isEmpty()) << "a stopped switcher holds nothing, so nothing of it is taken";
}

TEST_F(SwitcherModuleFixture, ACommandOpensWithTheTriggerHeldElsewhereAndLettingGoOfTheKeysSwitches)
{
    module = std::make_unique<SwitcherModule>(context);
    EXPECT_FALSE(module->openByCommand().isEmpty()) << "a stopped switcher says so";
    platform.fakeHotKeys->heldElsewhereKeyCodes = {KeyCode::Tab};
    module->start();
    ASSERT_TRUE(module->isTriggerRefused());

    // The window manager ran the command on its own Alt+Tab: Alt is still down.
    EXPECT_EQ(module->openByCommand(), QString());
    ASSERT_TRUE(module->session());
    EXPECT_TRUE(tap().seesAll);
    EXPECT_EQ(selectedId(), "w200");
    EXPECT_TRUE(down(KeyCode::Tab));
    EXPECT_EQ(selectedId(), "w300");
    EXPECT_EQ(module->openByCommand(), QString()) << "the bound key pressed again steps";
    EXPECT_EQ(selectedId(), "w100");
    EXPECT_TRUE(tap().send(KeyEventType::KeyUp, KeyCode::Tab, Option)) << "a key's release alone does not switch";
    EXPECT_TRUE(module->session());
    release(Shift);
    EXPECT_TRUE(module->session()) << "a modifier still held keeps it open";
    release(0);
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised, (QList<QPair<WindowId, bool>>{{100, false}}));

    // Opened with every key already up, Return switches.
    ASSERT_EQ(module->openByCommand(), QString());
    EXPECT_TRUE(down(KeyCode::Return, 0));
    EXPECT_TRUE(up(KeyCode::Return));
    EXPECT_FALSE(module->session());

    // With the keyboard held by another program it stays closed and says why.
    platform.fakeTaps->refuse = true;
    EXPECT_FALSE(module->openByCommand().isEmpty());
    EXPECT_FALSE(module->session());
}

TEST_F(SwitcherModuleFixture, WhereTheTapSeesOnlyOrlosWindowsTheDisplayTakesTheFocusAndLosingItCancels)
{
    platform.fakeTaps->ownWindowsOnly = true;
    start();
    ASSERT_EQ(module->openByCommand(), QString());
    SwitcherView& view = *module->hud().view();
    EXPECT_FALSE(view.windowFlags() & Qt::WindowDoesNotAcceptFocus);
    EXPECT_FALSE(view.testAttribute(Qt::WA_ShowWithoutActivating));

    // Losing the focus before having had it is an earlier opening's panel going away.
    QEvent deactivate(QEvent::WindowDeactivate), activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(&view, &deactivate);
    EXPECT_TRUE(module->session());
    QCoreApplication::sendEvent(&view, &activate);
    QCoreApplication::sendEvent(&view, &deactivate);
    EXPECT_FALSE(module->session());
    EXPECT_TRUE(catalog.raised.isEmpty());

    // Focused with the keys that ran the command still down, letting go switches.
    ASSERT_EQ(module->openByCommand(), QString());
    QCoreApplication::sendEvent(&view, &activate);
    release(0);
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised.size(), 1);
}

TEST_F(SwitcherModuleFixture, WhereTheTapSeesOnlyOrlosWindowsTheTriggerIsAHotKeyThatOpensAndSteps)
{
    platform.fakeTaps->ownWindowsOnly = true;
    fakes::FakeHotKeyService& service = *platform.fakeHotKeys;
    start();
    ASSERT_EQ(service.registered.size(), 2);
    const quint32 forwards = service.registered.key({KeyCode::Tab, 0x800});
    const quint32 backwards = service.registered.key({KeyCode::Tab, 0xA00});
    service.press(forwards);
    ASSERT_TRUE(module->session());
    EXPECT_TRUE(tap().seesAll);
    EXPECT_EQ(selectedId(), "w200");
    service.press(forwards);  // the compositor keeps sending the hot key while the display is open
    EXPECT_EQ(selectedId(), "w300");
    release(0);
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised, (QList<QPair<WindowId, bool>>{{300, false}}));
    service.press(backwards);
    EXPECT_EQ(selectedId(), "w300");
    down(KeyCode::Escape);

    // Let go before the display had the keyboard, a quick press switches at once; still held,
    // the release switches.
    QEvent activate(QEvent::WindowActivate);
    tap().modifiers = 0;
    service.press(forwards);
    QCoreApplication::sendEvent(module->hud().view(), &activate);
    EXPECT_FALSE(module->session());
    EXPECT_EQ(catalog.raised.size(), 2);
    tap().modifiers = Option;
    service.press(forwards);
    QCoreApplication::sendEvent(module->hud().view(), &activate);
    EXPECT_TRUE(module->session());
    release(0);
    EXPECT_FALSE(module->session());
    module->stop();
    EXPECT_TRUE(service.registered.isEmpty());
}

TEST_F(SwitcherModuleFixture, ATriggerTheDesktopKeepsIsLeftToItAndThePageSaysWhereToFreeIt)
{
    platform.fakeTaps->ownWindowsOnly = true;
    platform.fakeHotKeys->refusedCombos = {{KeyCode::Tab, 0x800}};
    platform.fakeSystemSwitcher->place = "Desktop Settings › Keys";
    start();
    EXPECT_FALSE(module->isRunning());
    EXPECT_EQ(hotKeys.taken(), (QList<HotKeys::Taken>{{"switcher", "Window Switcher", {KeyCode::Tab, Option}, "orlo switcher"}}));
    std::unique_ptr<QWidget> page(module->settingsView());
    const auto* refused = page->findChild<QLabel*>("triggerRefused");
    EXPECT_TRUE(refused->isVisibleTo(page.get()));
    EXPECT_TRUE(refused->text().contains("Desktop Settings › Keys")) << qPrintable(refused->text());
    platform.fakeHotKeys->refusedCombos.clear();
    module->retryRefusedTrigger();
    EXPECT_EQ(platform.fakeHotKeys->registered.size(), 2);
    EXPECT_TRUE(hotKeys.taken().isEmpty());
    EXPECT_FALSE(refused->isVisibleTo(page.get()));
}

TEST_F(SwitcherModuleFixture, ARefusedTriggerOffersTheOtherOnlyWhenItsKeysAreFree)
{
    platform.fakeTaps->refuse = true;
    platform.fakeHotKeys->refusedCombos = {{KeyCode::Tab, 0x300}};  // Super+Shift+Tab
    start();
    EXPECT_FALSE(module->freeTrigger());
    std::unique_ptr<QWidget> page(module->settingsView());
    EXPECT_TRUE(page->findChild<QPushButton*>("useFreeKeys")->isHidden());
    EXPECT_FALSE(page->findChild<QPushButton*>("copyCommands")->isHidden());

    module->stop();
    platform.fakeHotKeys->refusedCombos.clear();
    module->start();
    EXPECT_EQ(module->freeTrigger(), SwitcherSettings::Trigger::Command);
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty()) << "the trial grabs are let go";
    auto* useFreeKeys = page->findChild<QPushButton*>("useFreeKeys");
    ASSERT_FALSE(useFreeKeys->isHidden());
    platform.fakeTaps->refuse = false;  // the system grants the tap on the free keys
    useFreeKeys->click();
    EXPECT_EQ(module->settings().trigger(), SwitcherSettings::Trigger::Command);
    EXPECT_TRUE(module->isRunning());
    EXPECT_TRUE(page->findChild<QWidget*>("takenKeys")->isHidden());
}

TEST_F(SwitcherModuleFixture, TabsAreMergedAfterTheirBrowserAndIgnoredAfterACancel)
{
    const QChar fs(31), rs(30);
    const QString answer = QStringList{"1", "1", "Docs"}.join(fs) + rs + QStringList{"1", "2", "Mail"}.join(fs) + rs;
    catalog.apps << RunningApp{20, "com.google.Chrome", "Chrome", true};
    catalog.apps.removeAt(1);
    platform.fakeScripting->answers.insert("com.google.Chrome", answer);
    defaults.set("switcher.browserTabs", true);
    start();
    down(KeyCode::Tab);
    module->browserTabs().waitForWorker();
    QCoreApplication::processEvents();
    QStringList ids;
    for (const SwitchItem& i : module->session()->items()) ids << i.id;
    EXPECT_EQ(ids, (QStringList{"w100", "w200", "tcom.google.Chrome-1-1", "tcom.google.Chrome-1-2", "w300"}));
    EXPECT_EQ(selectedId(), "w200");
    EXPECT_EQ(module->session()->items()[2].appName, "Chrome");
    down(KeyCode::Escape);

    // The cached tabs show at once; fresh ones arriving after a cancel are dropped.
    down(KeyCode::Tab);
    EXPECT_EQ(module->session()->items().size(), 5);
    down(KeyCode::Escape);
    module->browserTabs().waitForWorker();
    QCoreApplication::processEvents();
    EXPECT_FALSE(module->session());
    EXPECT_FALSE(module->hud().isVisible());

    // Tabs of a browser without windows go to the end.
    SwitchItem window;
    window.id = "w1";
    window.pid = 1;
    const QList<SwitchItem> merged = SwitcherModule::merge({window}, module->browserTabs().cache(),
                                                           {RunningApp{77, "com.google.Chrome", "", true}},
                                                           [](const RunningApp&) { return QIcon(); });
    ASSERT_EQ(merged.size(), 3);
    EXPECT_EQ(merged[2].appName, "Browser");
}

TEST_F(SwitcherModuleFixture, SettingsFallBackAndThePageSaysWhatLinuxLacks)
{
    SwitcherSettings settings(defaults);
    defaults.set("switcher.trigger", "Option");
    defaults.set("switcher.layout", "Grid");
    EXPECT_EQ(settings.trigger(), SwitcherSettings::Trigger::Option);
    EXPECT_EQ(settings.layout(), SwitcherSettings::Layout::List);
    EXPECT_TRUE(settings.includeMinimized());
    EXPECT_FALSE(settings.browserTabs());
    defaults.set("switcher.includeMinimized", "no");
    EXPECT_TRUE(settings.includeMinimized());

    platform.fakeScripting->available = false;
    platform.fakeWorkspace->applicationFiles.insert("/apps/editor.desktop", AppInfo{0, "org.example.Editor", "Editor"});
    start();
    std::unique_ptr<QWidget> widget(module->settingsView());
    auto* page = static_cast<SwitcherSettingsView*>(widget.get());
    auto* unavailable = page->findChild<QLabel*>("tabsUnavailable");
    ASSERT_TRUE(unavailable);
    EXPECT_EQ(unavailable->text(), "Browser tabs are not available on this system.");
    EXPECT_FALSE(page->findChild<ToggleSwitch*>("browserTabs")->isEnabled());
    EXPECT_TRUE(page->findChild<QLabel*>("noneExcluded"));
    auto* excluded = page->findChild<AppListEditor*>();
    excluded->addApplications({"/apps/editor.desktop", "/apps/missing.desktop"});
    excluded->addApplications({"/apps/editor.desktop"});
    EXPECT_EQ(settings.excluded(), QStringList{"org.example.Editor"});
}

TEST(SwitcherHUD, SizesFollowTheTableAndThePanelOpensUnderThePointer)
{
    using Layout = SwitcherSettings::Layout;
    EXPECT_EQ(SwitcherHUD::size(0, Layout::List), QSize(620, 144));
    EXPECT_EQ(SwitcherHUD::size(25, Layout::List), QSize(620, 558));
    EXPECT_EQ(SwitcherHUD::size(7, Layout::Grid), QSize(864, 346));
    EXPECT_EQ(SwitcherHUD::size(2, Layout::Grid), QSize(460, 222));
    EXPECT_EQ(SwitcherHUD::size(40, Layout::Grid), QSize(864, 470));

    // A 1440x900 primary screen and a 3440x1440 one to its right, tops aligned.
    const QList<ScreenInfo> screens{ScreenInfo{QRectF(0, 0, 1440, 900), QRectF(0, 0, 1440, 876), 1, true, {}},
                                    ScreenInfo{QRectF(1440, -540, 3440, 1440), QRectF(1440, -540, 3440, 1440), 2, false, {}}};
    const QSize size(620, 190);
    EXPECT_EQ(SwitcherHUD::placement(QPointF(100, 800), screens, size), QPoint(410, 367));
    EXPECT_EQ(SwitcherHUD::placement(QPointF(3000, 0), screens, size), QPoint(1440 + 1410, 625));
    EXPECT_EQ(SwitcherHUD::placement(QPointF(-50, 5000), screens, size), SwitcherHUD::placement(QPointF(1, 1), screens, size));
}

TEST(SwitcherView, TextsFollowTheSession)
{
    SwitcherSession session({}, SwitcherSettings::Layout::List);
    SwitcherView view(false, false);
    view.setSession(&session, {}, {});
    EXPECT_EQ(view.emptyText(), "No windows on this desktop");
    EXPECT_EQ(view.hintText(), "Release to switch   ⇧ back   type to search   ⎋ cancel");
    session.type("zz");
    EXPECT_EQ(view.emptyText(), "No matches");
    EXPECT_EQ(view.hintText(), "↩ switch   ⎋ cancel   ⌫ edit search");
}

TEST(SwitcherView, TheSelectionStaysInViewAndRowsAreHit)
{
    QList<SwitchItem> items;
    for (int i = 0; i < 25; ++i) {
        SwitchItem item;
        item.id = QString("w%1").arg(i);
        item.kind = SwitchItem::Window{};
        items << item;
    }
    SwitcherSession session(items, SwitcherSettings::Layout::List);
    SwitcherView view(false, false);
    view.setSession(&session, {}, {});
    view.resize(SwitcherHUD::size(25, SwitcherSettings::Layout::List));
    session.move(-1);  // to the last row
    EXPECT_EQ(view.firstVisibleRow(), 15);
    EXPECT_EQ(view.itemAt(QPoint(300, SwitcherView::SearchHeight + 1 + 8 + 9 * 46 + 20)), 24);
    EXPECT_EQ(view.itemAt(QPoint(300, 10)), -1);
    session.move(1);
    EXPECT_EQ(view.firstVisibleRow(), 0);

    // The wheel scrolls the rows, a notch a row, never past either end.
    auto wheel = [&](int angle) {
        QWheelEvent event(QPointF(300, 200), QPointF(300, 200), {}, QPoint(0, angle), Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view, &event);
    };
    wheel(-120 * 3);
    EXPECT_EQ(view.firstVisibleRow(), 3);
    wheel(-60);
    EXPECT_EQ(view.firstVisibleRow(), 3) << "half a notch from a touchpad";
    wheel(-60);
    wheel(-120 * 40);
    EXPECT_EQ(view.firstVisibleRow(), 15);
    wheel(120 * 40);
    EXPECT_EQ(view.firstVisibleRow(), 0);

    // The selected row takes the palette's selection colour.
    QPalette palette = view.palette();
    palette.setColor(QPalette::Active, QPalette::Highlight, QColor(200, 30, 30));
    view.setPalette(palette);
    const QImage image = view.grab().toImage();
    const QColor selected = image.pixelColor(view.width() / 2, SwitcherView::SearchHeight + 1 + 8 + 3);
    EXPECT_GT(selected.red(), 120) << qPrintable(selected.name());
    EXPECT_LT(selected.blue(), 80) << qPrintable(selected.name());
}
