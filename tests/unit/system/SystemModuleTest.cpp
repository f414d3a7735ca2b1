#include "FakeServices.h"
#include "system/ByteCount.h"
#include "system/DiskCleaner.h"
#include "system/DisplayDimmer.h"
#include "system/KeyboardCleaner.h"
#include "system/SleepGuard.h"
#include "system/SystemModule.h"
#include "system/SystemMonitor.h"
#include "system/SystemSettingsPage.h"
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct System : ::testing::Test {
    fakes::FakeServices services;
    fakes::FakePlatform& platform = services.platform;
    std::unique_ptr<SystemModule> module;

    void SetUp() override
    {
        platform.fakeAccessibility->trusted = true;
        services.permissions.refresh();
        services.defaults.set("system.dimLevels", QVariantMap{{platform.fakeGamma->list.first().key, 0.5}});
        module = std::make_unique<SystemModule>(services.context);
    }
    bool dimmed() { return platform.fakeGamma->current.value(1) != fakes::FakeGamma::ramp(); }
    static bool showsText(QWidget* page, const QString& text)
    {
        for (QLabel* label : page->findChildren<QLabel*>())
            if (label->text() == text && !label->isHidden()) return true;
        return false;
    }
};

}  // namespace

TEST_F(System, IdentityAndLifecycle)
{
    EXPECT_EQ(module->id(), "system");
    EXPECT_EQ(module->title(), "System Monitoring");
    EXPECT_EQ(module->symbol(), "gauge.with.dots.needle.33percent");
    EXPECT_EQ(module->summary(), "Usage per app, disk cleanup, display dimming and keyboard cleaning.");
    EXPECT_FALSE(module->needsAccessibility());

    module->start();
    EXPECT_TRUE(module->monitor().isScheduled());
    EXPECT_TRUE(dimmed());
    ASSERT_TRUE(module->keyboardCleaner().begin());
    module->stop();
    module->stop();
    EXPECT_FALSE(module->monitor().isScheduled());
    EXPECT_FALSE(dimmed());
    EXPECT_FALSE(module->keyboardCleaner().isActive());
    module->start();
    EXPECT_TRUE(dimmed());
}

TEST_F(System, QuittingUndoesTheDimmingTheLockAndPreventSleepWithoutAStop)
{
    module->start();
    ASSERT_TRUE(module->keyboardCleaner().begin());
    module->sleepGuard().setOn(true);
    emit services.events.willTerminate();
    EXPECT_FALSE(dimmed());
    EXPECT_FALSE(module->keyboardCleaner().isActive());
    EXPECT_FALSE(module->dimmer().holdsSavedTables());
    EXPECT_FALSE(module->sleepGuard().isOn());
    EXPECT_TRUE(platform.fakePower->held.isEmpty());
}

TEST_F(System, SleepGuardHoldsOneAssertionAndFlipsBackWhenRefused)
{
    SleepGuard& guard = module->sleepGuard();
    QSignalSpy changes(&guard, &SleepGuard::isOnChanged);
    guard.setOn(true);
    guard.setOn(true);
    EXPECT_EQ(platform.fakePower->held.size(), 1);
    EXPECT_EQ(platform.fakePower->held.values().first(), "display: Orlo: Prevent Sleep");
    guard.setOn(false);
    guard.setOn(false);
    EXPECT_TRUE(platform.fakePower->held.isEmpty());
    EXPECT_EQ(changes.size(), 2);

    platform.fakePower->refuse = true;
    guard.setOn(true);
    EXPECT_FALSE(guard.isOn());
    EXPECT_EQ(changes.size(), 4);  // on, then back off for the switch to follow

    // Refused after the answers came: the switch flips back then.
    platform.fakePower->refuse = false;
    guard.setOn(true);
    ASSERT_EQ(platform.fakePower->held.size(), 1);
    platform.fakePower->refuseLater(platform.fakePower->held.keys().first() + 1);  // another assertion's
    EXPECT_TRUE(guard.isOn());
    platform.fakePower->refuseLater(platform.fakePower->held.keys().first());
    EXPECT_FALSE(guard.isOn());
    EXPECT_TRUE(platform.fakePower->held.isEmpty());
    EXPECT_EQ(changes.size(), 6);
}

TEST_F(System, DiskCleanerMeasuresOffTheGuiThreadAndOnlyEverMovesToTheTrash)
{
    auto& files = *platform.fakeUserFiles;
    files.locations = {{"caches", "App caches", {"/home/u/.cache/a", "/home/u/.cache/b"}}, {"logs", "Logs", {"/home/u/x.log"}}};
    files.sizes = {{"/home/u/.cache/a", 1000}, {"/home/u/.cache/b", 500}, {"/home/u/x.log", 20}};
    files.refused = {"/home/u/.cache/b"};
    DiskCleaner& cleaner = module->diskCleaner();
    cleaner.scan();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !cleaner.isBusy(); }, 3000));
    ASSERT_EQ(cleaner.items().size(), 2);
    EXPECT_EQ(cleaner.items()[0].size, 1500u);
    EXPECT_EQ(cleaner.measured(), 2);
    EXPECT_EQ(cleaner.trashSize(), 0u);

    cleaner.setSelected("caches", true);
    EXPECT_EQ(cleaner.selectedSize(), 1500u);
    cleaner.moveSelectedToTrash();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !cleaner.isBusy(); }, 3000));
    EXPECT_EQ(files.trashed, QStringList{"/home/u/.cache/a"});
    EXPECT_EQ(cleaner.lastError(), "/home/u/.cache/b is in use");
    EXPECT_EQ(cleaner.items()[0].size, 500u);  // measured again
    EXPECT_EQ(cleaner.trashSize(), 1000u);
    EXPECT_FALSE(files.emptied);

    cleaner.emptyTrash();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !cleaner.isBusy(); }, 3000));
    EXPECT_TRUE(files.emptied);
    EXPECT_EQ(cleaner.trashSize(), 0u);
}

TEST_F(System, EachProgramsCacheStartsChosenUnlessARunningProgramUsesIt)
{
    auto& files = *platform.fakeUserFiles;
    files.locations = {{"cache:fontconfig", "fontconfig", {"/home/u/.cache/fontconfig"}, true, {}},
                       {"cache:mozilla", "mozilla", {"/home/u/.cache/mozilla"}, true, "firefox"},
                       {"cache:thumbnails", "thumbnails", {"/home/u/.cache/thumbnails"}, true, {}},
                       {"logs", "Logs", {"/home/u/x.log"}, false, {}}};
    files.sizes = {{"/home/u/.cache/fontconfig", 100}, {"/home/u/.cache/mozilla", 9000}, {"/home/u/.cache/thumbnails", 400},
                   {"/home/u/x.log", 20}};
    std::unique_ptr<QWidget> page(module->settingsView());
    page->findChild<QTabWidget*>()->setCurrentIndex(1);
    page->show();
    DiskCleaner& cleaner = module->diskCleaner();
    ASSERT_TRUE(QTest::qWaitFor([&] { return cleaner.measured() == 4 && !cleaner.isBusy(); }, 3000));
    EXPECT_EQ(cleaner.selectedSize(), 500u);
    EXPECT_FALSE(cleaner.isSelected("cache:mozilla"));
    EXPECT_FALSE(cleaner.isSelected("logs"));

    auto* list = page->findChild<QTreeWidget*>("cleanupList");
    ASSERT_EQ(list->topLevelItemCount(), 2);
    QTreeWidgetItem* caches = list->topLevelItem(0);
    EXPECT_EQ(caches->text(0), "App caches");
    ASSERT_EQ(caches->childCount(), 3);
    EXPECT_EQ(caches->child(1)->text(0), "mozilla — in use by firefox");
    EXPECT_EQ(caches->child(1)->text(1), byteCount(9000));
    EXPECT_EQ(caches->child(1)->checkState(0), Qt::Unchecked);
    EXPECT_EQ(caches->checkState(0), Qt::PartiallyChecked);

    // The user's own choice stands at the next scan.
    caches->child(0)->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(cleaner.isSelected("cache:fontconfig"));
    cleaner.scan();
    ASSERT_TRUE(QTest::qWaitFor([&] { return cleaner.measured() == 4 && !cleaner.isBusy(); }, 3000));
    EXPECT_EQ(cleaner.selectedSize(), 400u);
}

TEST_F(System, SettingsPageHasItsTabsAndSaysWhenMonitoringIsPaused)
{
    std::unique_ptr<QWidget> page(module->settingsView());
    auto* tabs = page->findChild<QTabWidget*>();
    ASSERT_TRUE(tabs);
    QStringList titles;
    for (int i = 0; i < tabs->count(); ++i) titles << tabs->tabText(i);
    EXPECT_EQ(titles, QStringList({"Monitor", "Disk", "Displays", "Keyboard"}));
    page->show();
    EXPECT_TRUE(showsText(page.get(), "Monitoring is paused while the module is off."));
    EXPECT_EQ(module->monitor().viewers(), 1);
    module->start();
    EXPECT_TRUE(showsText(page.get(), "Collecting samples…"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return module->monitor().hasSample(); }, 3000));
    QTest::qWait(10);
    EXPECT_FALSE(showsText(page.get(), "Collecting samples…"));
    tabs->setCurrentIndex(2);
    EXPECT_EQ(module->monitor().viewers(), 0);
    EXPECT_FALSE(showsText(page.get(), "Turn the module on to apply dimming."));
    module->stop();
    EXPECT_TRUE(showsText(page.get(), "Turn the module on to apply dimming."));
    page.reset();
    EXPECT_EQ(module->monitor().viewers(), 0);
}

TEST_F(System, TheMonitorListsApplicationsWithTheirProcessesAndQuitsTheChosenOneAfterAsking)
{
    platform.fakeWorkspace->running = {AppInfo{50, "org.example.Editor", "Editor"}};
    platform.fakeProcesses->add(50, 1, "editor", 0, 3000);
    platform.fakeProcesses->add(51, 50, "spellcheck", 0, 1000);
    platform.fakeProcesses->add(60, 1, "daemon", 0, 500);
    platform.fakeProcesses->ticks = CpuTicks{0, 0, 16};
    std::unique_ptr<QWidget> page(module->settingsView());
    page->show();
    module->start();
    auto* list = page->findChild<QTreeWidget*>("appList");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list->topLevelItemCount() == 2; }, 3000));
    EXPECT_EQ(list->headerItem()->text(1), "CPU of 16 cores");  // the scale of the figure above
    QTreeWidgetItem* editor = list->topLevelItem(0);
    EXPECT_EQ(editor->text(0), "Editor");
    ASSERT_EQ(editor->childCount(), 2);
    EXPECT_EQ(editor->child(1)->text(0), "spellcheck (51)");

    auto answer = [](const QString& button) {
        QTimer::singleShot(50, [button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            for (QAbstractButton* b : box ? box->buttons() : QList<QAbstractButton*>())
                if (b->text() == button) b->click();
        });
    };
    auto* quit = page->findChild<QPushButton*>("quit");
    list->setCurrentItem(editor);
    answer("Cancel");
    quit->click();
    EXPECT_TRUE(platform.fakeWorkspace->closed.isEmpty());
    answer("Quit");
    quit->click();
    EXPECT_EQ(platform.fakeWorkspace->closed, QList<qint64>{50});
    EXPECT_TRUE(showsText(page.get(), "Unsaved changes in Editor may ask to save changes first."));

    list->setCurrentItem(list->topLevelItem(1));
    platform.fakeProcesses->unkillable << 60;
    module->monitor().quitGraceMs = 10;
    answer("Force Quit");
    quit->click();
    EXPECT_EQ(platform.fakeProcesses->terminated, (QList<QPair<qint64, bool>>{{60, true}}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return showsText(page.get(), "“daemon” is still running after Force Quit: it may be stuck waiting for a disk or device."); }, 3000));
}
