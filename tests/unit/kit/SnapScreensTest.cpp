#include "platform/x11/X11Screens.h"
#include "kit/SnapScreens.h"
#include <gtest/gtest.h>

using namespace orlo;
using x11::X11Screens;

namespace {
ScreenInfo screen(quint32 id, QRectF frame)
{
    ScreenInfo s;
    s.displayId = id;
    s.frame = s.visibleFrame = frame;
    return s;
}

// The primary 1440x900 with a 3440x1440 screen to its right, tops aligned.
const SnapScreens pair({screen(1, QRectF(0, 0, 1440, 900)), screen(2, QRectF(1440, -540, 3440, 1440))});
}  // namespace

TEST(SnapScreens, FlipUsesThePrimaryScreensTopAndIsItsOwnInverse)
{
    const QRectF r(100, 50, 300, 200);
    EXPECT_EQ(pair.flip(r), QRectF(100, 650, 300, 200));
    EXPECT_EQ(pair.flip(pair.flip(r)), r);
    EXPECT_EQ(pair.flip(QRectF(1440, -540, 3440, 1440)), QRectF(1440, 0, 3440, 1440));
    EXPECT_EQ(SnapScreens({}).flip(r), QRectF(100, -250, 300, 200));
}

TEST(SnapScreens, PointsBelongToTheScreenWhosePixelsTheyStartAt)
{
    EXPECT_EQ(pair.screenAt({0, 900})->displayId, 1u);      // the top-left pixel
    EXPECT_EQ(pair.screenAt({1439, 1})->displayId, 1u);     // the bottom-right pixel
    EXPECT_EQ(pair.screenAt({1440, 900})->displayId, 2u);
    EXPECT_FALSE(pair.screenAt({100, 0}).has_value());      // below the primary
    EXPECT_FALSE(pair.screenAt({4880, 100}).has_value());
}

TEST(SnapScreens, AWindowBelongsToTheScreenShowingMostOfIt)
{
    EXPECT_EQ(pair.screenFor(QRectF(1000, 100, 600, 400))->displayId, 1u);  // 440 on the left, 160 on the right
    EXPECT_EQ(pair.screenFor(QRectF(1300, 100, 600, 400))->displayId, 2u);
    // Equal shares: the earlier screen wins.
    EXPECT_EQ(pair.screenFor(QRectF(1340, 100, 200, 400))->displayId, 1u);
    // On no screen at all: the screen under its middle, else the primary.
    EXPECT_EQ(pair.screenFor(QRectF(2000, 300, 0, 0))->displayId, 2u);
    EXPECT_EQ(pair.screenFor(QRectF(9000, 9000, 10, 10))->displayId, 1u);
    EXPECT_FALSE(SnapScreens({}).screenFor(QRectF(0, 0, 10, 10)).has_value());
}

TEST(SnapScreens, OrderRunsLeftToRightThenBottomToTop)
{
    const SnapScreens screens({screen(1, QRectF(0, 0, 100, 100)), screen(2, QRectF(-100, 100, 100, 100)),
                               screen(3, QRectF(-100, 0, 100, 100)), screen(4, QRectF(100, 0, 100, 100))});
    QList<quint32> ids;
    for (const ScreenInfo& s : screens.ordered()) ids << s.displayId;
    EXPECT_EQ(ids, (QList<quint32>{3, 2, 1, 4}));
    EXPECT_EQ(screens.orderedIndex(screens.all()[0]), 2);
}

TEST(X11ScreensStruts, EachMonitorLosesOnlyTheStrutsOnItsOwnEdges)
{
    const QSize root(4880, 1440);
    const QRect left(0, 0, 1440, 900), right(1440, 0, 3440, 1440);
    // A 24-pixel tray at the bottom of the left monitor: measured from the root's bottom edge.
    const auto tray = X11Screens::struts({0, 0, 0, 564, 0, 0, 0, 0, 0, 0, 1200, 1439}, root);
    EXPECT_EQ(X11Screens::visibleArea(left, tray), QRect(0, 0, 1440, 876));
    EXPECT_EQ(X11Screens::visibleArea(right, tray), right);
    // A panel along the top of the right monitor only, and one at the left of the whole root.
    auto more = X11Screens::struts({0, 0, 30, 0, 0, 0, 0, 0, 1440, 4879, 0, 0}, root);
    more << X11Screens::struts({48, 0, 0, 0}, root);
    EXPECT_EQ(X11Screens::visibleArea(right, more), QRect(1440, 30, 3440, 1410));
    EXPECT_EQ(X11Screens::visibleArea(left, more), QRect(48, 0, 1392, 900));
    // A strut whose inner edge lies beyond a monitor does not empty it.
    const auto wide = X11Screens::struts({1500, 0, 0, 0, 0, 1439, 0, 0, 0, 0, 0, 0}, root);
    EXPECT_EQ(X11Screens::visibleArea(left, wide), left);
    EXPECT_EQ(X11Screens::visibleArea(right, wide), QRect(1500, 0, 3380, 1440));
}

TEST(X11ScreensStruts, AStrutMeasuredFromItsMonitorsEdgeReservesWhatItsDockCovers)
{
    const QList<QRect> monitors{QRect(0, 0, 1440, 900), QRect(1440, 0, 3440, 1440)};
    // 24 pixels from the root's bottom edge lie below the left monitor: the dock stands at
    // the bottom of that monitor instead.
    const auto strut = X11Screens::struts({0, 0, 0, 24, 0, 0, 0, 0, 0, 0, 1416, 1439}, QSize(4880, 1440)).first();
    const auto placed = X11Screens::anchored(strut, QRect(1416, 876, 24, 24), monitors);
    EXPECT_EQ(X11Screens::visibleArea(monitors[0], {placed}), QRect(0, 0, 1440, 876));
    EXPECT_EQ(X11Screens::visibleArea(monitors[1], {placed}), monitors[1]);
    // A strut that does reach a monitor is taken as it is.
    const auto proper = X11Screens::struts({0, 0, 0, 564, 0, 0, 0, 0, 0, 0, 0, 1439}, QSize(4880, 1440)).first();
    EXPECT_EQ(X11Screens::anchored(proper, QRect(1416, 876, 24, 24), monitors).area, proper.area);
}

TEST(X11ScreensWorkAreas, GnomesPerMonitorAreasCountAndTheWholeAreaOnlyWithOneMonitor)
{
    const QList<QRect> monitors{QRect(0, 0, 1440, 900), QRect(1440, 0, 3440, 1440)};
    // GNOME's top bar takes 32 pixels of the primary monitor and is no strut window.
    const QList<QRect> gnome{QRect(0, 32, 1440, 868), QRect(1440, 0, 3440, 1440)};
    EXPECT_EQ(X11Screens::workAreas(monitors, gnome, {QRect(0, 32, 4880, 1408)}), gnome);
    // A window manager that sees one monitor where RandR has two says nothing of either.
    EXPECT_EQ(X11Screens::workAreas(monitors, {QRect(0, 0, 4880, 1416)}, {}), monitors);
    // Without them, one rectangle for every monitor cannot say which monitor lost what.
    EXPECT_EQ(X11Screens::workAreas(monitors, {}, {QRect(0, 0, 4880, 876)}), monitors);
    EXPECT_EQ(X11Screens::workAreas({monitors[0]}, {}, {QRect(0, 0, 1440, 876)}), QList<QRect>{QRect(0, 0, 1440, 876)});
    EXPECT_EQ(X11Screens::workAreas({monitors[0]}, {}, {}), QList<QRect>{monitors[0]});
}
