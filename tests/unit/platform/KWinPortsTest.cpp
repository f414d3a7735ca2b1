// What Orlo makes of the reports of its script inside KWin, and what it asks of the script.
#include "platform/Geometry.h"
#include "platform/wayland/kwin/KWinApplications.h"
#include "platform/wayland/kwin/KWinDesktop.h"
#include "platform/wayland/kwin/KWinReport.h"
#include "platform/wayland/kwin/KWinScreens.h"
#include "platform/wayland/kwin/KWinWindowCatalog.h"
#include "platform/wayland/kwin/KWinWindowServer.h"
#include "platform/wayland/kwin/KWinWorkspace.h"
#include "switcher/WindowList.h"
#include <QJsonArray>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;
using namespace orlo::kwin;

namespace {

QByteArray windowJson(const char* id, const char* title, int pid, const char* frame = "[0,0,400,300]", const char* extra = "")
{
    return QStringLiteral(R"({"id":"%1","title":"%2","resourceClass":"app%3","pid":%3,"normal":true,"frame":%4%5})")
        .arg(id, title).arg(pid).arg(frame, extra).toUtf8();
}

KWinReport report(const QList<QByteArray>& windows, const char* recent = "[]", const char* active = "",
                  const char* screens = R"([{"frame":[0,0,1280,800],"workArea":[0,0,1280,760]}])")
{
    const QByteArray json = "{\"active\":\"" + QByteArray(active) + "\",\"recent\":" + recent + ",\"windows\":["
        + windows.join(',') + "],\"screens\":" + screens + "}";
    const auto parsed = parseKWinReport(json);
    EXPECT_TRUE(parsed) << json.constData();
    return parsed.value_or(KWinReport());
}

QStringList titles(const QList<const KWinWindow*>& windows)
{
    QStringList list;
    for (const KWinWindow* w : windows) list << w->title;
    return list;
}

}  // namespace

TEST(KWinReport, TakesWhatIsWellFormedAndLeavesTheRestOut)
{
    EXPECT_FALSE(parseKWinReport("[]"));
    EXPECT_FALSE(parseKWinReport("{\"windows\":"));
    const auto parsed = parseKWinReport(R"({
        "active": 7, "recent": ["a", "a", 3, "b"],
        "windows": [
            {"id":"a","title":"A","pid":"12","frame":[1,2,3,4],"minimized":"yes","screen":1},
            {"id":"a","title":"again","frame":[1,2,3,4]},
            {"id":"","frame":[0,0,10,10]},
            {"id":"no size","frame":[0,0,0,10]},
            {"id":"far","frame":[1e300,0,10,10]},
            {"id":"short","frame":[0,0,10]},
            {"id":"b","pid":4294967296,"frame":[0,0,10,10],"screen":-3},
            "not a window"],
        "screens": [{"frame":[0,0,1280,800],"workArea":[1200,0,200,800]}, {"frame":[]}, {"frame":[1280,0,1920,1080],"workArea":[1280,30,1920,1050]}]
    })");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->active, QString());
    EXPECT_EQ(parsed->recent, (QList<QString>{"a", "b"}));
    ASSERT_EQ(parsed->windows.size(), 2);
    EXPECT_EQ(parsed->windows[0].title, "A");
    EXPECT_EQ(parsed->windows[0].pid, 0);  // a text is no process id
    EXPECT_FALSE(parsed->windows[0].minimized);
    EXPECT_EQ(parsed->windows[0].screen, 1);
    EXPECT_EQ(parsed->windows[1].pid, 0);  // beyond any process id
    EXPECT_EQ(parsed->windows[1].screen, -1);
    EXPECT_TRUE(parsed->windows[1].onCurrentDesktop);
    ASSERT_EQ(parsed->screens.size(), 2);
    // A work area reaching past its screen stands for none.
    EXPECT_EQ(parsed->screens[0].workArea, QRectF(0, 0, 1280, 800));
    EXPECT_EQ(parsed->screens[1].workArea, QRectF(1280, 30, 1920, 1050));
}

TEST(KWinDesktop, KeepsEachWindowsNumberAndNeverGivesAClosedOnesAgain)
{
    KWinDesktop desktop([](const QJsonObject&) {});
    desktop.apply(report({windowJson("x", "X", 1), windowJson("y", "Y", 2)}));
    const WindowId y = desktop.idOf(*desktop.topFirst().first());
    desktop.apply(report({windowJson("y", "Y", 2)}));
    ASSERT_TRUE(desktop.window(y));
    EXPECT_EQ(desktop.window(y)->title, "Y");
    desktop.apply(report({windowJson("y", "Y", 2), windowJson("z", "Z", 3)}));
    const WindowId z = desktop.idOf(*desktop.topFirst().first());
    EXPECT_NE(z, y);
    EXPECT_NE(z, WindowId(1));  // X had 1 before it closed
}

TEST(KWinDesktop, OrdersByActivationThenByStackAndTellsWhenAnotherWindowIsActive)
{
    KWinDesktop desktop([](const QJsonObject&) {});
    QSignalSpy active(&desktop, &KWinDesktop::activeChanged);
    // Bottom of the stack first; only c and a were active since the script came.
    desktop.apply(report({windowJson("a", "A", 1), windowJson("b", "B", 1), windowJson("c", "C", 2), windowJson("d", "D", 2)},
                         R"(["c","gone","a"])", "c"));
    EXPECT_EQ(titles(desktop.byRecency()), (QStringList{"C", "A", "D", "B"}));
    EXPECT_EQ(active.count(), 1);
    desktop.apply(report({windowJson("a", "A", 1), windowJson("c", "C", 2)}, R"(["c","a"])", "c"));
    EXPECT_EQ(active.count(), 1);
    desktop.apply(report({windowJson("a", "A", 1), windowJson("c", "C", 2)}, R"(["a","c"])", "a"));
    EXPECT_EQ(active.count(), 2);
    EXPECT_EQ(desktop.activeWindow()->title, "A");
}

TEST(KWinDesktop, AsksInKWinsCoordinatesAndCountsTheWindowMovedUntilKWinReports)
{
    QList<QJsonObject> sent;
    KWinDesktop desktop([&](const QJsonObject& request) { sent << request; });
    // KWin's first screen need not start at KWin's origin.
    desktop.apply(report({windowJson("a", "A", 1, "[110,50,400,300]")}, "[]", "a",
                         R"([{"frame":[100,0,1280,800],"workArea":[100,0,1280,800]}])"));
    const WindowId a = desktop.idOf(*desktop.activeWindow());
    KWinWindowServer server(desktop);
    EXPECT_EQ(server.frame(a), QRectF(10, 50, 400, 300));
    server.setFrame(a, QRectF(0.4, 0, 640.5, 800));
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0]["op"].toString(), "frame");
    EXPECT_EQ(sent[0]["id"].toString(), "a");
    EXPECT_EQ(sent[0]["frame"].toArray(), (QJsonArray{100, 0, 641, 800}));
    EXPECT_EQ(server.frame(a), QRectF(0.4, 0, 640.5, 800));

    server.setFrame(WindowId(99), QRectF(0, 0, 10, 10));
    KWinApplications apps;
    KWinWindowCatalog(desktop, apps).raise(WindowId(99), true);
    EXPECT_EQ(sent.size(), 1);  // nothing is asked for a window that is not there
}

TEST(KWinScreens, FlipsKWinsScreensAndTellsOnlyOfChanges)
{
    KWinDesktop desktop([](const QJsonObject&) {});
    KWinScreens screens(desktop);
    QSignalSpy changed(&screens, &Screens::changed);
    const char* two = R"([{"frame":[0,0,1280,800],"workArea":[0,0,1280,760]},{"frame":[1280,0,1920,1080],"workArea":[1280,0,1920,1080]}])";
    desktop.apply(report({}, "[]", "", two));
    desktop.apply(report({windowJson("a", "A", 1)}, "[]", "", two));
    EXPECT_EQ(changed.count(), 1);
    const QList<ScreenInfo> list = screens.screens();
    ASSERT_EQ(list.size(), 2);
    // y grows upwards from the primary screen's bottom edge; the panel takes its bottom 40.
    EXPECT_EQ(list[0].visibleFrame, QRectF(0, 40, 1280, 760));
    EXPECT_EQ(list[1].frame, QRectF(1280, -280, 1920, 1080));
    EXPECT_EQ(flipped(list[1].visibleFrame, 800), QRectF(1280, 0, 1920, 1080));
}

TEST(KWinWindowCatalog, GivesTheSwitcherItsWindowsMostRecentFirst)
{
    QList<QJsonObject> sent;
    KWinDesktop desktop([&](const QJsonObject& request) { sent << request; });
    KWinApplications apps;
    KWinWindowCatalog catalog(desktop, apps);
    KWinWorkspace workspace(desktop, apps);
    desktop.apply(report({windowJson("editor", "Notes", 10), windowJson("term", "Shell", 20),
                          windowJson("tool", "Palette", 20, "[0,0,200,200]", R"(,"skipTaskbar":true)"),
                          windowJson("min", "Hidden", 30, "[0,0,400,300]", R"(,"minimized":true)"),
                          windowJson("away", "Elsewhere", 40, "[0,0,400,300]", R"(,"onCurrentDesktop":false)")},
                         R"(["term","editor"])", "term"));
    EXPECT_EQ(workspace.frontmostApplication()->pid, 20);

    WindowList list(catalog, workspace);
    auto titlesOf = [](const QList<SwitchItem>& items) {
        QStringList t;
        for (const SwitchItem& i : items) t << i.title;
        return t;
    };
    EXPECT_EQ(titlesOf(list.current(false, {}, {20, 10})), (QStringList{"Shell", "Notes"}));
    EXPECT_EQ(titlesOf(list.current(true, {}, {20, 10})), (QStringList{"Shell", "Notes", "Hidden"}));

    const QList<SwitchItem> items = list.current(true, {}, {});
    const auto& hidden = std::get<SwitchItem::Window>(items.last().kind);
    ASSERT_TRUE(hidden.element);
    catalog.raise(*hidden.element, hidden.minimized);
    ASSERT_EQ(sent.size(), 1);
    EXPECT_EQ(sent[0]["id"].toString(), "min");
    EXPECT_TRUE(sent[0]["unminimize"].toBool());
}
