#include "FakePlatform.h"
#include "kit/AppListEditor.h"
#include "kit/Defaults.h"
#include "kit/Permissions.h"
#include "clipboard/ClipToast.h"
#include "clipboard/ClipboardModule.h"
#include "clipboard/ClipboardPicker.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardSettingsPage.h"
#include "clipboard/ClipboardStore.h"
#include "clipboard/PickerPanel.h"
#include "input/HotKeys.h"
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

const AppInfo Editor{100, "org.example.Editor", "Editor"};
const AppInfo OrloItself{4242, "orlo", "Orlo"};

struct ClipModule : ::testing::Test {
    QTemporaryDir data;
    fakes::FakePlatform platform;
    std::unique_ptr<Defaults> defaults;
    std::unique_ptr<Permissions> permissions;
    std::unique_ptr<HotKeys> hotKeys;
    AppEvents events;
    std::unique_ptr<OrloContext> context;
    std::unique_ptr<ClipboardModule> module;

    void SetUp() override
    {
        qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
        platform.fakeAccessibility->trusted = true;
        platform.fakeWorkspace->front = Editor;
        defaults = std::make_unique<Defaults>(*platform.settings);
        permissions = std::make_unique<Permissions>(*platform.accessibility);
        hotKeys = std::make_unique<HotKeys>(*platform.hotKeys);
        context = std::make_unique<OrloContext>(OrloContext{platform, *defaults, *hotKeys, *permissions, events});
        module = std::make_unique<ClipboardModule>(*context);
        module->start();
    }
    void TearDown() override
    {
        module.reset();
        for (QWidget* w : QApplication::topLevelWidgets()) delete qobject_cast<ClipToast*>(w);
    }
    void copy(const QString& text)
    {
        platform.fakePasteboard->copyText(text);
        module->store().poll();
    }
    void pressShortcut()
    {
        ASSERT_EQ(platform.fakeHotKeys->registered.size(), 1);
        platform.fakeHotKeys->press(platform.fakeHotKeys->registered.keys().first());
    }
    QStringList toasts()
    {
        QStringList texts;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* toast = qobject_cast<ClipToast*>(w)) texts << toast->text();
        return texts;
    }
};

}  // namespace

TEST_F(ClipModule, ChoosingPastesIntoThePreviousApplicationOnce)
{
    copy("hello");
    copy("newer");
    const auto shortcut = platform.fakeHotKeys->registered.values().first();
    EXPECT_EQ(shortcut, qMakePair(quint32(KeyCode::V), quint32(0x100 | 0x200)));  // Command-Shift-V

    pressShortcut();
    ASSERT_TRUE(module->picker().isVisible());
    EXPECT_EQ(module->pasteTarget(), Editor);
    platform.fakeWorkspace->activate(OrloItself);  // the picker takes the keyboard

    module->paste(module->store().items().at(1), false);
    EXPECT_FALSE(module->picker().isVisible());
    EXPECT_EQ(platform.fakePasteboard->string(), "hello");
    EXPECT_EQ(module->store().items().first().text, "hello");
    ASSERT_EQ(platform.fakeWorkspace->activated.size(), 1);
    EXPECT_EQ(platform.fakeWorkspace->activated.first(), Editor);
    EXPECT_EQ(platform.fakeKeySynth->pastes, 0);  // not before the application is back in front
    QTest::qWait(ClipboardModule::PasteDelayMs + 50);
    EXPECT_EQ(platform.fakeKeySynth->pastes, 1);
    EXPECT_TRUE(toasts().isEmpty());
    // The paste itself is not a new copy.
    module->store().poll();
    EXPECT_EQ(module->store().items().size(), 2);
}

TEST_F(ClipModule, WithoutAutoPasteOrPermissionOnlyCopiesAndSaysSo)
{
    copy("hello");
    module->settings().setAutoPaste(false);
    pressShortcut();
    module->paste(module->store().items().first(), false);
    EXPECT_EQ(toasts(), QStringList{"Copied"});

    module->settings().setAutoPaste(true);
    platform.fakeAccessibility->trusted = false;
    permissions->refresh();
    pressShortcut();
    module->paste(module->store().items().first(), false);
    EXPECT_TRUE(toasts().contains("Copied. Allow Accessibility in Orlo to paste automatically."));

    // A system that lets Orlo type no keys (a Wayland compositor without a virtual keyboard).
    platform.fakeAccessibility->trusted = true;
    permissions->refresh();
    platform.fakeKeySynth->canPost = false;
    pressShortcut();
    module->paste(module->store().items().first(), false);
    EXPECT_TRUE(toasts().contains("Copied: press Ctrl+V"));
    QTest::qWait(ClipboardModule::PasteDelayMs + 50);
    EXPECT_EQ(platform.fakeKeySynth->pastes, 0);
    EXPECT_TRUE(platform.fakeWorkspace->activated.isEmpty());
}

TEST_F(ClipModule, OpenedOverOrloItPastesIntoTheApplicationUsedBefore)
{
    platform.fakeWorkspace->activate(AppInfo{300, "org.example.Terminal", "Terminal"});
    platform.fakeWorkspace->activate(OrloItself);
    pressShortcut();
    EXPECT_EQ(module->pasteTarget()->bundleId, "org.example.Terminal");
    // The shortcut again closes the picker.
    pressShortcut();
    EXPECT_FALSE(module->picker().isVisible());
}

TEST_F(ClipModule, KeysTypedWhileTheShortcutIsStillHeldGoToThePicker)
{
    copy("alpha");
    copy("kappa");
    const quint32 id = platform.fakeHotKeys->registered.keys().first();
    auto typeWhileHeld = [&](quint32 keyCode, quint64 flags = 0, const QString& text = {}) {
        platform.fakeHotKeys->pressWhileHeld(id, KeyEvent{KeyEventType::KeyDown, keyCode, flags, false, text});
    };
    typeWhileHeld(40, 0, "k");  // with the picker closed: it reaches no one
    pressShortcut();
    QLineEdit* search = module->picker().panel()->searchField();
    EXPECT_EQ(search->text(), "");
    typeWhileHeld(40, 0, "k");
    // The key's own text, whatever the layout made of it.
    typeWhileHeld(0, ModifierFlag::Shift, "A");
    typeWhileHeld(23, ModifierFlag::Shift, "%");
    EXPECT_EQ(search->text(), "kA%");
    // With a command modifier it is not typing; Backspace takes back a character.
    typeWhileHeld(0, ModifierFlag::Command, "a");
    typeWhileHeld(KeyCode::Delete);
    typeWhileHeld(KeyCode::Delete);
    EXPECT_EQ(search->text(), "k");
    EXPECT_EQ(module->picker().model().count(), 1);
    // Return chooses, as in the open picker.
    typeWhileHeld(KeyCode::Return);
    EXPECT_FALSE(module->picker().isVisible());
    EXPECT_EQ(platform.fakePasteboard->string(), "kappa");
}

TEST_F(ClipModule, SettingsTakeEffectAtOnce)
{
    for (int i = 0; i < 30; ++i) copy(QString::number(i));
    module->settings().setMaxItems(10);
    EXPECT_EQ(module->store().items().size(), 10);

    const quint32 before = platform.fakeHotKeys->registered.keys().first();
    module->settings().setShortcut(Shortcut{KeyCode::V, ModifierFlag::Control | ModifierFlag::Option});
    ASSERT_EQ(platform.fakeHotKeys->registered.size(), 1);
    EXPECT_NE(platform.fakeHotKeys->registered.keys().first(), before);

    module->stop();
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());
    // Stopped, a changed shortcut registers nothing.
    module->settings().setShortcut(ClipboardSettings::DefaultShortcut);
    EXPECT_TRUE(platform.fakeHotKeys->registered.isEmpty());
}

TEST_F(ClipModule, AnOrderlyEndSavesEvenTheCopyNotYetPolled)
{
    copy("polled");
    platform.fakePasteboard->copyText("copied just before the end");
    emit events.willTerminate();
    QFile file(data.filePath("Orlo/Clipboard/history.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray saved = file.readAll();
    EXPECT_TRUE(saved.contains("copied just before the end"));
    EXPECT_TRUE(saved.contains("polled"));
}

TEST_F(ClipModule, SettingsPageShowsAndEditsTheSettings)
{
    copy("one");
    copy("two");
    module->store().togglePin(module->store().items().first());
    std::unique_ptr<QWidget> page(module->settingsView());
    EXPECT_EQ(page->findChild<QLabel*>("status")->text(), "2 items, 1 pinned");
    auto* explanation = page->findChild<QLabel*>("autoPasteExplanation");
    EXPECT_TRUE(explanation->text().startsWith("Choosing an item pastes it"));
    module->settings().setAutoPaste(false);
    EXPECT_TRUE(explanation->text().startsWith("Choosing an item only copies it"));

    const int listed = int(module->settings().excluded().size());
    platform.fakeWorkspace->applicationFiles.insert("/apps/vault.desktop", AppInfo{0, "org.example.Vault", "Vault"});
    page->findChild<AppListEditor*>()->addApplications({"/apps/vault.desktop", "/apps/vault.desktop", "/apps/unknown.desktop"});
    ASSERT_EQ(module->settings().excluded().size(), listed + 1);
    EXPECT_TRUE(module->settings().isExcluded(QString("org.example.Vault")));

    QCoreApplication::processEvents();
    QWidget* row = page->findChild<QWidget*>("excluded.org.example.Vault");
    ASSERT_TRUE(row);
    row->findChild<QPushButton*>()->click();
    EXPECT_FALSE(module->settings().isExcluded(QString("org.example.Vault")));
}

TEST_F(ClipModule, ARefusedShortcutIsReportedWithItsCommandUntilItRegisters)
{
    module->stop();
    platform.fakeHotKeys->refusedKeyCodes = {KeyCode::V};
    module->start();
    const HotKeys::Taken taken{"clipboard", "Open history", ClipboardSettings::DefaultShortcut, "orlo clipboard"};
    EXPECT_EQ(hotKeys->taken(), QList<HotKeys::Taken>{taken});
    std::unique_ptr<QWidget> page(module->settingsView());
    EXPECT_TRUE(page->findChild<QWidget*>("takenKeys")->isVisibleTo(page.get()));

    platform.fakeHotKeys->refusedKeyCodes.clear();
    module->settings().setShortcut(Shortcut{KeyCode::V, ModifierFlag::Control | ModifierFlag::Option});
    EXPECT_TRUE(hotKeys->taken().isEmpty());
    EXPECT_FALSE(page->findChild<QWidget*>("takenKeys")->isVisibleTo(page.get()));
}
