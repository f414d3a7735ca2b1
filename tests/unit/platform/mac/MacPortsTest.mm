// The macOS ports that need no permission, on the Mac that runs the tests.
#include "platform/mac/MacPasteboard.h"
#include "platform/mac/MacProcessTable.h"
#include "platform/mac/MacSettingsStorage.h"
#include "platform/mac/MacWindowHandles.h"
#import <AppKit/AppKit.h>
#include <QUuid>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace orlo;

TEST(MacSettingsStorage, KeepsEveryTypeAndTellsABooleanFromANumber)
{
    const QString domain = QStringLiteral("app.orlo.Orlo.tests.") + QUuid::createUuid().toString(QUuid::Id128);
    mac::MacSettingsStorage storage(domain);
    EXPECT_TRUE(storage.load().values.isEmpty());
    const QVariantMap values{
        {"system.enabled", false},
        {"clipboard.maxItems", 200},
        {"windows.gap", 2.5},
        {"switcher.trigger", "command"},
        {"clipboard.shortcut", QByteArray("{\"keyCode\":9}")},
        {"switcher.excluded", QStringList{"com.example.A", "com.example.B"}},
        {"system.dimLevels", QVariantMap{{"1-2-3", 0.5}}},
    };
    ASSERT_TRUE(storage.save(values));
    const QVariantMap loaded = mac::MacSettingsStorage(domain).load().values;
    [[NSUserDefaults standardUserDefaults] removePersistentDomainForName:domain.toNSString()];

    EXPECT_EQ(loaded.value("system.enabled").typeId(), QMetaType::Bool);
    EXPECT_FALSE(loaded.value("system.enabled").toBool());
    EXPECT_EQ(loaded.value("clipboard.maxItems").typeId(), QMetaType::LongLong) << "an integer is not a Boolean";
    EXPECT_EQ(loaded.value("clipboard.maxItems").toLongLong(), 200);
    EXPECT_EQ(loaded.value("windows.gap").typeId(), QMetaType::Double);
    EXPECT_EQ(loaded.value("windows.gap").toDouble(), 2.5);
    EXPECT_EQ(loaded.value("switcher.trigger").toString(), "command");
    EXPECT_EQ(loaded.value("clipboard.shortcut").typeId(), QMetaType::QByteArray);
    EXPECT_EQ(loaded.value("clipboard.shortcut").toByteArray(), "{\"keyCode\":9}");
    EXPECT_EQ(loaded.value("switcher.excluded").toStringList(), (QStringList{"com.example.A", "com.example.B"}));
    EXPECT_EQ(loaded.value("system.dimLevels").toMap().value("1-2-3").toDouble(), 0.5);
}

TEST(MacPasteboard, ReadsWhatItWroteAndListsThePasswordManagersMarkers)
{
    const QString name = QStringLiteral("app.orlo.Orlo.tests.") + QUuid::createUuid().toString(QUuid::Id128);
    mac::MacPasteboard pasteboard(name);
    NSPasteboard* board = [NSPasteboard pasteboardWithName:name.toNSString()];
    const qint64 before = pasteboard.changeCount();

    Pasteboard::Contents contents;
    contents.string = QStringLiteral("héllo");
    contents.html = "<b>h&eacute;llo</b>";
    contents.filePaths = {QStringLiteral("/tmp/a file.txt"), QStringLiteral("/tmp/b.txt")};
    contents.color = QColor(255, 128, 0);
    pasteboard.write(contents);
    EXPECT_GT(pasteboard.changeCount(), before);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("héllo"));
    EXPECT_EQ(pasteboard.data(Pasteboard::Form::Html), contents.html);
    EXPECT_EQ(pasteboard.filePaths(), contents.filePaths);
    ASSERT_TRUE(pasteboard.color());
    EXPECT_EQ(pasteboard.color()->rgb(), QColor(255, 128, 0).rgb());
    EXPECT_TRUE(pasteboard.data(Pasteboard::Form::Png).isEmpty());

    // A password manager's copy, as such applications make it.
    [board clearContents];
    [board setString:@"secret" forType:NSPasteboardTypeString];
    [board setData:[NSData data] forType:@"org.nspasteboard.ConcealedType"];
    EXPECT_TRUE(pasteboard.types().contains("org.nspasteboard.ConcealedType"));
    EXPECT_EQ(pasteboard.string(), QStringLiteral("secret"));
    [board releaseGlobally];
}

TEST(MacProcessTable, ReadsThisProcessAndTheMachine)
{
    mac::MacProcessTable table;
    EXPECT_TRUE(table.allPids().contains(getpid()));
    const auto own = table.read(getpid());
    ASSERT_TRUE(own);
    EXPECT_EQ(own->ppid, getppid());
    EXPECT_EQ(own->name, QStringLiteral("orlo_unit_tests"));
    EXPECT_GT(own->memory, 0u);
    const auto ticks = table.cpuTicks();
    ASSERT_TRUE(ticks);
    EXPECT_GT(ticks->total, ticks->busy);
    const auto memory = table.memory();
    ASSERT_TRUE(memory);
    EXPECT_GT(memory->used, 0u);
    EXPECT_LT(memory->used, memory->total);
    const quint64 earlier = table.monotonicNanoseconds();
    EXPECT_GE(table.monotonicNanoseconds(), earlier);
    EXPECT_FALSE(table.read(-5));
}

TEST(MacWindowHandles, AnElementReachedTwiceKeepsItsId)
{
    // Comparing elements needs no Accessibility permission, only elements.
    mac::MacWindowHandles handles;
    const mac::ax::Element first(AXUIElementCreateApplication(getpid()));
    const mac::ax::Element again(AXUIElementCreateApplication(getpid()));
    const mac::ax::Element other(AXUIElementCreateApplication(getppid()));
    const WindowId id = handles.idFor(first.get());
    EXPECT_EQ(handles.idFor(again.get()), id);
    EXPECT_NE(handles.idFor(other.get()), id);
    EXPECT_TRUE(CFEqual(handles.element(id), first.get()));
    EXPECT_EQ(handles.element(id + 100), nullptr);
}
