#include "FakePlatform.h"
#include "switcher/BrowserTabs.h"
#include <QCoreApplication>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
const QChar fs(31), rs(30);

// One record of a browser's answer: the fields joined by the field separator.
QString record(const QStringList& fields) { return fields.join(fs) + rs; }

struct BrowserTabsFixture : ::testing::Test {
    fakes::FakePlatform platform;
    BrowserTabs tabs{*platform.scripting, *platform.windowCatalog};

    BrowserTabsFixture()
    {
        platform.fakeCatalog->apps = {RunningApp{50, "com.google.Chrome", "Chrome", true},
                                      RunningApp{51, "com.apple.Safari", "Safari", true},
                                      RunningApp{52, "org.example.Editor", "Editor", true}};
    }
    // Runs the event loop until the refresh's answer has been handed back.
    void settle()
    {
        tabs.waitForWorker();
        QCoreApplication::processEvents();
    }
};
}  // namespace

TEST(BrowserTabsScripts, ListingAndSelectingScriptsAreExact)
{
    const QString chrome = BrowserTabs::listingScript("com.google.Chrome");
    EXPECT_TRUE(chrome.startsWith("tell application id \"com.google.Chrome\"\n    with timeout of 2 seconds\n"));
    EXPECT_TRUE(chrome.contains("\n                set titles to title of every tab of w\n"));
    EXPECT_TRUE(chrome.contains("\n                    set out to out & wid & fs & i & fs & t & rs\n"));
    EXPECT_TRUE(chrome.endsWith("        return out\n    end timeout\nend tell"));
    EXPECT_EQ(chrome.count('\n'), 18);
    EXPECT_TRUE(BrowserTabs::listingScript("com.apple.Safari").contains("set titles to name of every tab of w"));

    EXPECT_EQ(BrowserTabs::selectingScript({"com.apple.Safari", 17, 3, "x"}),
              "tell application id \"com.apple.Safari\"\n    with timeout of 2 seconds\n        set w to window id 17\n"
              "        set current tab of w to tab 3 of w\n        set index of w to 1\n        activate\n"
              "    end timeout\nend tell");
    EXPECT_TRUE(BrowserTabs::selectingScript({"com.brave.Browser", 5, 2, "x"}).contains("\n        set active tab index of w to 2\n"));
}

TEST(BrowserTabsScripts, AnswerParserKeepsGoodRecordsOnly)
{
    const QString answer = record({"17", " 3", "Blank"})  // a blank is not a digit: dropped
        + record({"17", "3", ""})                           // empty title
        + record({"x", "1", "Letters"})                     // window id not a number
        + record({"9", "2"})                                // two fields
        + record({"9", "4", QString("Title %1 with separator").arg(fs)}) + rs;
    const QList<BrowserTab> parsed = BrowserTabs::parse("com.google.Chrome", answer);
    ASSERT_EQ(parsed.size(), 2);
    EXPECT_EQ(parsed[0], (BrowserTab{"com.google.Chrome", 17, 3, "Untitled"}));
    EXPECT_EQ(parsed[1].title, QString("Title %1 with separator").arg(fs));
}

TEST_F(BrowserTabsFixture, RefreshAsksEveryBrowserOnceAndRecordsDenials)
{
    platform.fakeScripting->answers.insert("com.google.Chrome", record({"1", "1", "Docs"}));
    platform.fakeScripting->answers.insert("com.apple.Safari", Scripting::Failure{BrowserTabs::AutomationDenied});
    QSignalSpy denied(&tabs, &BrowserTabs::deniedChanged);
    int done = 0, overlapping = 0;
    tabs.refresh({}, [&](const BrowserTabs::Tabs& result) {
        ++done;
        EXPECT_EQ(result.value("com.google.Chrome").size(), 1);
    });
    tabs.refresh({}, [&](const BrowserTabs::Tabs&) { ++overlapping; });
    EXPECT_TRUE(tabs.isRefreshing());
    settle();
    EXPECT_EQ(done, 1);
    EXPECT_EQ(overlapping, 0);
    EXPECT_EQ(platform.fakeScripting->runs, 2);  // the editor is no browser
    EXPECT_EQ(tabs.denied(), QSet<QString>{"com.apple.Safari"});
    EXPECT_EQ(tabs.cache().value("com.google.Chrome").first().title, "Docs");

    // The same denials again wake nobody; an excluded browser is never asked.
    tabs.refresh({}, {});
    settle();
    EXPECT_EQ(denied.count(), 1);
    tabs.refresh({"com.apple.Safari"}, {});
    settle();
    EXPECT_TRUE(tabs.denied().isEmpty());
    EXPECT_EQ(denied.count(), 2);
    EXPECT_EQ(platform.fakeScripting->runs, 5);
}

TEST_F(BrowserTabsFixture, SelectingATabActivatesItsBrowser)
{
    tabs.select({"com.apple.Safari", 4, 2, "Docs"});
    settle();
    EXPECT_EQ(platform.fakeCatalog->activated, QList<qint64>{51});
    EXPECT_EQ(platform.fakeScripting->runs, 1);
}
