// Window snapping in the real application: keys and drags moving windows of other processes
// under each window manager, on a 1440x900 primary monitor (a 24-pixel tray at its bottom)
// and a 3440x1440 monitor to its right.
#include "SnapSession.h"
#include <QImage>

using namespace orlo::testing;

TEST_F(SnapSession, LeftHalfKeyCyclesOnTheLaptopMonitorAndStartsWithAThirdOnTheUltrawide)
{
    Window window(*session, "Cycle");
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(0, 0, 720, 876)));
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(0, 0, 960, 876)));
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(0, 0, 480, 876)));
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(0, 0, 720, 876)));

    window.place(*session, QRect(2000, 300, 802, 625));
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(1440, 0, 1147, 1440)));
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(1440, 0, 1720, 1440)));
    EXPECT_TRUE(snapsTo(window, rightKey, QRect(3733, 0, 1147, 1440)));
}

TEST_F(SnapSession, InvisibleMarginsOfAClientDecoratedWindowLieOutsideItsArea)
{
    // Shadows drawn by the client itself: 10 pixels at the sides, 8 above, 12 below. Such a
    // client draws its title bar too and asks for no decorations; mutter and metacity only
    // honour the shadows of a window they do not decorate.
    Window window(*session, "Shadowed", QRect(300, 280, 402, 325), true);
    session->run("xprop", {"-id", window.id, "-f", "_GTK_FRAME_EXTENTS", "32c", "-set", "_GTK_FRAME_EXTENTS", "10, 10, 8, 12"});
    session->key(leftKey);
    // Whatever decorations a window manager still draws lie around the client, the shadows inside it.
    auto visible = [&] { return session->frameGeometry(window.id).adjusted(10, 8, -10, -12); };
    EXPECT_TRUE(VirtualSession::waitFor([&] { return visible() == QRect(0, 0, 720, 876); }, 3000));
    session->key(leftKey);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return visible() == QRect(0, 0, 960, 876); }, 3000));
}

TEST_F(SnapSession, NextDisplayCarriesALeftHalfAcrossAndWrapsAndRestoreUndoesTheSeries)
{
    const QRect before(200, 150, 502, 425);
    Window window(*session, "Travel", before);
    EXPECT_TRUE(snapsTo(window, leftKey, QRect(0, 0, 720, 876)));
    EXPECT_TRUE(snapsTo(window, nextDisplayKey, QRect(1440, 0, 1720, 1440)));
    EXPECT_TRUE(snapsTo(window, nextDisplayKey, QRect(0, 0, 720, 876)));
    EXPECT_TRUE(snapsTo(window, previousDisplayKey, QRect(1440, 0, 1720, 1440)));
    EXPECT_TRUE(snapsTo(window, "ctrl+alt+BackSpace", before));
}

TEST_F(SnapSession, OrlosOwnWindowIsNeverSnappedNorDragged)
{
    Window other(*session, "Other", QRect(600, 200, 402, 325));
    OrloProcess second(*session);  // a second start opens the running Orlo's settings
    QStringList found;
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !(found = session->findWindows("^Orlo Settings$")).isEmpty(); }));
    Window settings;
    settings.id = found.first();
    settings.activate(*session);
    const QRect frame = session->frameGeometry(settings.id);

    // The keys act on the application the user came from.
    EXPECT_TRUE(snapsTo(other, leftKey, QRect(0, 0, 720, 876)));
    EXPECT_EQ(session->frameGeometry(settings.id), frame);

    // metacity may leave the settings below the window just snapped: the drag must catch
    // the settings, not that window.
    other.place(*session, QRect(4000, 900, 402, 325));
    settings.activate(*session);
    dragTitleBar(settings, QPoint(2, 500));
    session->mouseUp();
    EXPECT_TRUE(endedWithoutSnap()) << qPrintable(orlo->log());
    EXPECT_FALSE(previewShown("leftHalf", 0)) << qPrintable(orlo->log());
    session->run("xdotool", {"windowclose", settings.id});
}

TEST_F(SnapSession, DraggingToTheLeftEdgePreviewsTheHalfAndSnapsOnRelease)
{
    Window window(*session, "Drag Left", QRect(400, 300, 402, 325));
    dragTitleBar(window, QPoint(2, 450));
    const bool shown = previewShown("leftHalf", 3000, QRect(0, 0, 720, 876));
    EXPECT_TRUE(shown) << qPrintable(orlo->log());
    // Under mutter's compositor a screenshot takes longer than the drag may last.
    if (shown && session->windowManager() != "mutter") {
        // The preview's outline runs along the half's edges, in the accent colour.
        const QList<QPoint> outline{QPoint(3, 200), QPoint(717, 200), QPoint(300, 3), QPoint(300, 873)};
        auto painted = [&](const QImage& image) {
            return std::all_of(outline.begin(), outline.end(), [&](QPoint p) { return accent(image, p); });
        };
        const QImage image = screenshotOnce(painted, "snap-drag-left-half-" + session->windowManager() + ".png");
        for (QPoint p : outline) EXPECT_TRUE(accent(image, p)) << "at " << p.x() << "," << p.y();
    }
    session->mouseUp();
    EXPECT_TRUE(waitForFrame(window, QRect(0, 0, 720, 876)));
}

TEST_F(SnapSession, DraggingToTheTopLeftCornerGivesTheQuarterAndResizingNeverSnaps)
{
    Window window(*session, "Drag Corner", QRect(500, 300, 402, 325));
    dragTitleBar(window, QPoint(1, 40));
    EXPECT_TRUE(previewShown("topLeft", 3000, QRect(0, 0, 720, 438))) << qPrintable(orlo->log());
    session->mouseUp();
    EXPECT_TRUE(waitForFrame(window, QRect(0, 0, 720, 438)));

    // Resizing by the bottom border, with the pointer reaching the left edge. KWin, mutter
    // and metacity draw no bottom border: they take presses just below the window for it.
    window.place(*session, QRect(500, 300, 402, 325));
    dragStart = orlo->log().size();
    const bool bordersOutside = QStringList{"kwin", "mutter", "metacity"}.contains(session->windowManager());
    const int border = bordersOutside ? 300 + 325 + 2 : 300 + 325 - 2;
    EXPECT_TRUE(startDrag(QPoint(700, border), QPoint(-30, 20), 1, [&] { return session->frameGeometry(window.id).height() > 325; }))
        << "the border drag did not resize the window";
    session->mouseMove(2, 750);
    session->mouseUp();
    EXPECT_TRUE(endedWithoutSnap()) << qPrintable(orlo->log());
    EXPECT_EQ(session->frameGeometry(window.id).topLeft(), QPoint(500, 300));
    EXPECT_FALSE(orlo->log().mid(dragStart).contains("preview"));
}

TEST_F(SnapSession, TheWindowManagersOwnEdgeTilingIsNamedWhereItActsOnDragsToo)
{
    // KWin and xfwm4 tile windows dropped on an edge by default, mutter does not; metacity
    // does too, but the session has switched it off.
    const QString wm = session->windowManager();
    const bool tiles = wm == "kwin" || wm == "xfwm4";
    EXPECT_EQ(orlo->log().contains("orlo.windows: edge tiling: Your window manager also tiles"), tiles) << qPrintable(orlo->log());
    if (wm == "kwin") {
        EXPECT_TRUE(orlo->log().contains("Screen Edges"));
    }
}

namespace {
class SnapGapSession : public SnapSession {
protected:
    static void SetUpTestSuite() { startSession({{"windows.gap", 10}}); }
};
}  // namespace

TEST_F(SnapGapSession, AGapOfTenLeavesTenPointsAtTheEdgesAndBetweenNeighbours)
{
    Window left(*session, "Gap Left");
    EXPECT_TRUE(snapsTo(left, leftKey, QRect(10, 10, 705, 856)));
    Window right(*session, "Gap Right");
    EXPECT_TRUE(snapsTo(right, rightKey, QRect(725, 10, 705, 856)));
    Window top(*session, "Gap Quarter", QRect(2000, 300, 802, 625));
    EXPECT_TRUE(snapsTo(top, "ctrl+alt+u", QRect(1450, 10, 1705, 705)));
}

namespace {
class SnapGridSession : public SnapSession {
protected:
    static void SetUpTestSuite()
    {
        startSession({{"windows.autoLayoutAllApps", true}});
        // A 16:10 monitor on the right.
        session->run("xrandr", {"--delmonitor", "RIGHT"});
        session->run("xrandr", {"--setmonitor", "RIGHT", "1600/423x1000/265+1440+0", "none"});
        ASSERT_TRUE(VirtualSession::waitFor([] {
            return session->output("xrandr", {"--listmonitors"}).contains("1600/423x1000/265+1440+0");
        }));
    }
};
}  // namespace

TEST_F(SnapGridSession, FourWindowsOfAllAppsFormATwoByTwoGridInReadingOrder)
{
    Window a(*session, "Grid A", QRect(1500, 100, 302, 225));
    Window b(*session, "Grid B", QRect(2300, 120, 302, 225));
    Window c(*session, "Grid C", QRect(1480, 580, 302, 225));
    Window d(*session, "Grid D", QRect(2400, 600, 302, 225));
    Window elsewhere(*session, "Grid Elsewhere", QRect(100, 100, 302, 225));
    a.activate(*session);
    session->key("ctrl+alt+a");
    EXPECT_TRUE(waitForFrame(a, QRect(1440, 0, 800, 500)));
    EXPECT_TRUE(waitForFrame(b, QRect(2240, 0, 800, 500)));
    EXPECT_TRUE(waitForFrame(c, QRect(1440, 500, 800, 500)));
    EXPECT_TRUE(waitForFrame(d, QRect(2240, 500, 800, 500)));
    EXPECT_EQ(session->frameGeometry(elsewhere.id), QRect(100, 100, 302, 225));
}
