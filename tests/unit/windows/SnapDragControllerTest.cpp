#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "windows/SnapDragController.h"
#include "windows/SnapOverlayPanel.h"
#include "windows/SnapSettings.h"
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {
ScreenInfo laptop()
{
    // Screen coordinates; in top-left ones the usable area is (0, 25, 1440, 875).
    return ScreenInfo{QRectF(0, 0, 1440, 900), QRectF(0, 0, 1440, 875), 7, true, {}};
}

struct Snapped {
    WindowId window;
    SnapArea area;
    quint32 display;
    QRectF start;
};

struct SnapDragFixture : ::testing::Test {
    fakes::FakePlatform platform;
    Defaults defaults{*platform.settings};
    SnapSettings settings{defaults};
    fakes::FakeMouseMonitor& mouse = *platform.fakeMouse;
    fakes::FakeWindowServer& windows = *platform.fakeWindows;
    QList<Snapped> snapped;
    SnapDragController drag{mouse, windows, *platform.screens, settings, platform.workspace->ownPid(),
                            [this](const SnapWindow& w, SnapArea a, const ScreenInfo& s, const QRectF& start) {
                                snapped << Snapped{w.id(), a, s.displayId, start};
                            }};

    SnapDragFixture()
    {
        platform.fakeScreens->list = {laptop()};
        drag.start();
    }
    // Screen coordinates of a top-left point on the laptop screen.
    static QPointF at(double x, double y) { return QPointF(x, 900 - y); }

    // A title-bar drag: the window follows the pointer, checked no sooner than every 50 ms.
    void dragWindow(WindowId id, QPointF from, QPointF to)
    {
        mouse.down(at(from.x(), from.y()));
        const QRectF start = windows.windowsById[id].frame;
        windows.windowsById[id].frame = start.translated(to - from);
        QTest::qWait(60);
        mouse.drag(at(to.x(), to.y()));
    }
};
}  // namespace

TEST(SnapDragZones, EdgesAndCornersOfTheWholeScreen)
{
    const ScreenInfo s = laptop();
    auto zone = [&](double x, double yFromTop) { return SnapDragController::zone(QPointF(x, 900 - yFromTop), s); };
    EXPECT_EQ(zone(6, 50), SnapArea::topLeft);
    EXPECT_EQ(zone(6, 100), SnapArea::leftHalf);
    EXPECT_EQ(zone(7, 100), std::nullopt);
    EXPECT_EQ(zone(720, 0), SnapArea::maximize);
    EXPECT_EQ(zone(720, 7), SnapArea::maximize);  // the top edge is one point deeper
    EXPECT_EQ(zone(720, 8), std::nullopt);
    EXPECT_EQ(zone(90, 0), SnapArea::topLeft);
    EXPECT_EQ(zone(91, 0), SnapArea::maximize);
    EXPECT_EQ(zone(1433, 400), SnapArea::rightHalf);
    EXPECT_EQ(zone(1432, 400), std::nullopt);
    EXPECT_EQ(zone(1400, 899), SnapArea::bottomRight);
    EXPECT_EQ(zone(720, 894), SnapArea::bottomHalf);
    EXPECT_EQ(zone(720, 893), std::nullopt);
    EXPECT_EQ(zone(0, 880), SnapArea::bottomLeft);
    EXPECT_EQ(zone(1439, 10), SnapArea::topRight);
}

TEST_F(SnapDragFixture, DraggingToAnEdgePreviewsItsAreaAndReleaseSnapsShortlyAfter)
{
    const WindowId w = windows.add(55, QRectF(300, 200, 400, 300));
    dragWindow(w, QPointF(500, 210), QPointF(2, 400));
    ASSERT_TRUE(drag.target());
    EXPECT_EQ(drag.target()->area, SnapArea::leftHalf);
    SnapOverlayPanel* panel = drag.overlay(7);
    ASSERT_TRUE(panel);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->box(), QRectF(2, 27, 716, 871));  // the half, inset by 2

    // Along the edge into the corner zone, then away from every zone.
    mouse.drag(at(2, 60));
    EXPECT_EQ(drag.target()->area, SnapArea::topLeft);
    mouse.drag(at(300, 300));
    EXPECT_FALSE(drag.target());
    EXPECT_FALSE(panel->isVisible());
    mouse.drag(at(2, 400));
    mouse.up(at(2, 400));
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(snapped.isEmpty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return snapped.size() == 1; }));
    EXPECT_EQ(snapped[0].window, w);
    EXPECT_EQ(snapped[0].area, SnapArea::leftHalf);
    EXPECT_EQ(snapped[0].display, 7u);
    EXPECT_EQ(snapped[0].start, QRectF(300, 200, 400, 300));
}

TEST_F(SnapDragFixture, ReleasingOutsideAnyZoneLeavesTheWindowWhereItWasDropped)
{
    const WindowId w = windows.add(55, QRectF(300, 200, 400, 300));
    dragWindow(w, QPointF(500, 210), QPointF(700, 400));
    EXPECT_FALSE(drag.target());
    mouse.up(at(700, 400));
    QTest::qWait(80);
    EXPECT_TRUE(snapped.isEmpty());
}

TEST_F(SnapDragFixture, ResizingOwnWindowsAndPanelsNeverPreview)
{
    // Resizing: the size changes while the pointer reaches the edge.
    const WindowId resized = windows.add(55, QRectF(300, 200, 400, 300));
    mouse.down(at(300, 350));
    windows.windowsById[resized].frame = QRectF(2, 200, 698, 300);
    QTest::qWait(60);
    mouse.drag(at(2, 350));
    QTest::qWait(60);
    mouse.drag(at(1, 350));
    EXPECT_FALSE(drag.target());
    mouse.up(at(1, 350));

    const WindowId own = windows.add(platform.workspace->ownPid(), QRectF(300, 200, 400, 300));
    dragWindow(own, QPointF(500, 210), QPointF(2, 400));
    EXPECT_FALSE(drag.target());
    mouse.up(at(2, 400));

    const WindowId dialog = windows.add(56, QRectF(300, 200, 400, 300), false);
    dragWindow(dialog, QPointF(500, 210), QPointF(2, 400));
    EXPECT_FALSE(drag.target());
    mouse.up(at(2, 400));
    QTest::qWait(80);
    EXPECT_TRUE(snapped.isEmpty());
    EXPECT_EQ(drag.overlay(7), nullptr);
}

TEST_F(SnapDragFixture, StoppingForgetsTheDragAndItsPreviews)
{
    const WindowId w = windows.add(55, QRectF(300, 200, 400, 300));
    dragWindow(w, QPointF(500, 210), QPointF(2, 400));
    ASSERT_TRUE(drag.overlay(7));
    drag.stop();
    EXPECT_FALSE(mouse.started);
    EXPECT_EQ(drag.overlay(7), nullptr);
    mouse.up(at(2, 400));
    QTest::qWait(80);
    EXPECT_TRUE(snapped.isEmpty());
}

TEST_F(SnapDragFixture, AWindowThatFollowsLateStillPreviewsWhileThePointerRestsAtTheEdge)
{
    // The window manager moves the window only after the pointer has reached the edge and
    // stopped there: no further pointer movement tells the controller to look again.
    const WindowId w = windows.add(55, QRectF(300, 200, 400, 300));
    mouse.down(at(500, 210));
    mouse.drag(at(2, 400));
    EXPECT_FALSE(drag.target());
    windows.windowsById[w].frame = QRectF(-198, 390, 400, 300);
    ASSERT_TRUE(QTest::qWaitFor([&] { return drag.target().has_value(); }, 500));
    EXPECT_EQ(drag.target()->area, SnapArea::leftHalf);
    mouse.up(at(2, 400));
    ASSERT_TRUE(QTest::qWaitFor([&] { return snapped.size() == 1; }));
}
