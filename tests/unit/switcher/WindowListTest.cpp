#include "FakePlatform.h"
#include "switcher/WindowList.h"
#include <gtest/gtest.h>

using namespace orlo;

namespace {
struct WindowListFixture : ::testing::Test {
    fakes::FakePlatform platform;
    fakes::FakeWindowCatalog& catalog = *platform.fakeCatalog;
    WindowList list{catalog, *platform.workspace};

    void app(qint64 pid, const QString& bundleId, const QString& name = {}, bool regular = true)
    {
        catalog.apps << RunningApp{pid, bundleId, name, regular};
    }
    void onScreen(quint32 number, qint64 pid, QRectF bounds, const QString& name = {}, std::optional<double> alpha = 1.0, int layer = 0)
    {
        catalog.onScreen << ScreenWindow{number, pid, layer, bounds, alpha, name};
    }
    QStringList ids(const QList<SwitchItem>& items)
    {
        QStringList out;
        for (const SwitchItem& i : items) out << i.id;
        return out;
    }
    QStringList current(bool minimized = true, QSet<QString> excluded = {}, QList<qint64> order = {})
    {
        return ids(list.current(minimized, excluded, order));
    }
};
}  // namespace

TEST_F(WindowListFixture, SkipsSmallTransparentLayeredAndForeignWindows)
{
    app(10, "org.example.Editor", "Editor");
    app(11, "org.example.Helper", "Helper", false);  // no ordinary windows
    onScreen(1, 10, QRectF(0, 0, 59, 200));
    onScreen(2, 10, QRectF(0, 0, 60, 40));
    onScreen(3, 10, QRectF(0, 0, 400, 300), {}, 0.0);
    onScreen(4, 10, QRectF(0, 0, 400, 300), {}, std::nullopt);
    onScreen(5, 10, QRectF(0, 0, 400, 300), {}, 1.0, 1);
    onScreen(6, 11, QRectF(0, 0, 400, 300));
    onScreen(7, 4242, QRectF(0, 0, 400, 300));  // Orlo's own
    onScreen(8, 99, QRectF(0, 0, 400, 300));    // an owner that is not running
    EXPECT_EQ(current(), QStringList{"w2"});
}

TEST_F(WindowListFixture, OrdersApplicationsByRecencyAndPairsWindows)
{
    app(10, "org.example.Editor", "Editor");
    app(20, "org.example.Viewer", "");
    app(30, "", "Nameless");
    // The application's own list pairs by number, else by a frame within 3 points.
    onScreen(1, 10, QRectF(0, 0, 400, 300), "server name");
    onScreen(2, 20, QRectF(100, 100, 500, 400));
    onScreen(3, 20, QRectF(100, 100, 500, 400));
    onScreen(4, 30, QRectF(0, 0, 300, 200));
    catalog.appWindows[10] = {AppWindow{0x501, 1u, "Document", QRectF(0, 0, 400, 300), false, true}};
    // Two windows alike in title and frame pair with two entries, not both with the first.
    catalog.appWindows[20] = {AppWindow{0x601, std::nullopt, "Same", QRectF(101, 102, 502, 398), false, true},
                              AppWindow{0x602, std::nullopt, "Same", QRectF(101, 102, 502, 398), false, true}};
    const QList<SwitchItem> items = list.current(true, {}, {20, 10, 20});
    ASSERT_EQ(ids(items), (QStringList{"w1", "w2", "w3", "w4"}));
    EXPECT_EQ(items[0].title, "Document");
    EXPECT_EQ(std::get<SwitchItem::Window>(items[0].kind).element, WindowId(0x501));
    EXPECT_EQ(std::get<SwitchItem::Window>(items[1].kind).element, WindowId(0x601));
    EXPECT_EQ(std::get<SwitchItem::Window>(items[2].kind).element, WindowId(0x602));
    EXPECT_EQ(items[1].appName, "App");
    // Without an own list the window stays, without an element, titled by its application.
    EXPECT_FALSE(std::get<SwitchItem::Window>(items[3].kind).element);
    EXPECT_EQ(items[3].title, "Nameless");
    EXPECT_FALSE(items[3].icon.isNull());

    EXPECT_EQ(current(true, {""}), (QStringList{"w1", "w2", "w3"})) << "the empty identifier excludes the nameless";
    EXPECT_EQ(current(true, {"org.example.Viewer"}), (QStringList{"w1", "w4"}));
}

// An office suite's writer and spreadsheet run in one process: each window goes with its
// own application, name and exclusion, and the icons are kept by application.
TEST_F(WindowListFixture, ApplicationsSharingAProcessAreToldApart)
{
    app(10, "office-writer", "Writer");
    app(10, "office-calc", "Spreadsheet");
    catalog.onScreen << ScreenWindow{1, 10, 0, QRectF(0, 0, 400, 300), 1.0, "", "office-calc"}
                     << ScreenWindow{2, 10, 0, QRectF(0, 0, 400, 300), 1.0, "", "office-writer"};
    catalog.windowsOfBundle["office-writer"] = {AppWindow{0x501, 2u, "Letter", QRectF(0, 0, 400, 300), false, true},
                                                AppWindow{0x503, std::nullopt, "", {}, true, true}};
    catalog.windowsOfBundle["office-calc"] = {AppWindow{0x502, 1u, "Budget", QRectF(0, 0, 400, 300), false, true},
                                              AppWindow{0x504, std::nullopt, "Old budget", {}, true, true}};
    QIcon writerIcon(QPixmap(8, 8));
    platform.fakeWorkspace->icons["office-writer"] = writerIcon;
    const QList<SwitchItem> items = list.current(true, {}, {});
    ASSERT_EQ(ids(items), (QStringList{"w1", "w2", "m10-0", "m10-1"}));
    EXPECT_EQ(items[0].appName, "Spreadsheet");
    EXPECT_EQ(items[0].title, "Budget");
    EXPECT_EQ(items[1].appName, "Writer");
    EXPECT_EQ(items[1].icon.cacheKey(), writerIcon.cacheKey());
    EXPECT_NE(items[0].icon.cacheKey(), writerIcon.cacheKey());
    EXPECT_EQ(items[2].title, "Writer") << "a minimized window without a title";
    EXPECT_EQ(current(true, {"office-calc"}), (QStringList{"w2", "m10-0"}));
}

TEST_F(WindowListFixture, UnpairedAndNonStandardWindowsAreDropped)
{
    app(10, "org.example.Editor", "Editor");
    onScreen(1, 10, QRectF(0, 0, 400, 300));
    onScreen(2, 10, QRectF(500, 0, 400, 300));
    catalog.appWindows[10] = {AppWindow{0x501, 1u, "Palette", QRectF(0, 0, 400, 300), false, false},
                              AppWindow{0x502, 9u, "Elsewhere", QRectF(0, 500, 400, 300), false, true}};
    EXPECT_TRUE(current().isEmpty());
}

TEST_F(WindowListFixture, MinimizedWindowsFollowInApplicationOrder)
{
    app(10, "org.example.Editor", "Editor");
    app(20, "org.example.Viewer", "Viewer");
    onScreen(1, 10, QRectF(0, 0, 400, 300));
    catalog.appWindows[10] = {AppWindow{0x501, 1u, "Open", QRectF(0, 0, 400, 300), false, true},
                              AppWindow{0x502, std::nullopt, "Down one", {}, true, true},
                              AppWindow{0x503, std::nullopt, "Down two", {}, true, true},
                              AppWindow{0x504, std::nullopt, "Minimized panel", {}, true, false},
                              AppWindow{0x505, std::nullopt, "", {}, true, true}};
    catalog.appWindows[20] = {AppWindow{0x601, 77u, "Viewer down", {}, true, true}};
    const QList<SwitchItem> items = list.current(true, {}, {20});
    EXPECT_EQ(ids(items), (QStringList{"w1", "w77", "m10-0", "m10-1", "m10-2"}));
    EXPECT_TRUE(items[1].isMinimized());
    EXPECT_EQ(items[2].title, "Down one");
    // A minimized window without a title goes by its application's name.
    EXPECT_EQ(items[4].title, "Editor");
    EXPECT_EQ(current(false), QStringList{"w1"});
}
