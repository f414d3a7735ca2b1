// Snapping meets what real desktops do to windows: maximized windows, full-screen ones,
// terminals that grow in character cells, left-handed mice, and screens drawn at twice the
// pixels per point.
#include "SnapSession.h"
#include <QImage>
#include <QRegularExpression>

using namespace orlo::testing;

namespace {
// The resize increment a window asks for, from its WM_NORMAL_HINTS.
QSize resizeIncrement(VirtualSession& session, const QString& id)
{
    const QString hints = session.output("xprop", {"-id", id, "WM_NORMAL_HINTS"});
    const auto match = QRegularExpression("resize increment: (\\d+) by (\\d+)").match(hints);
    return match.hasMatch() ? QSize(match.captured(1).toInt(), match.captured(2).toInt()) : QSize(1, 1);
}
}  // namespace

TEST_F(SnapSession, AMaximizedWindowLandsExactlyOnItsFirstSnap)
{
    Window window(*session, "Maximized");
    const QRect before = session->frameGeometry(window.id);
    session->run("wmctrl", {"-i", "-r", window.id, "-b", "add,maximized_vert,maximized_horz"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return hasState(window, "MAXIMIZED_HORZ") && session->frameGeometry(window.id) != before; }));
    // Window managers draw maximized windows with other decorations, or none: the frame is
    // measured once the window is maximized no longer. Those that take the session's two
    // monitors for one maximize over both, and the window then belongs to the right one.
    const bool onTheRight = session->frameGeometry(window.id).center().x() >= 1440;
    EXPECT_TRUE(snapsTo(window, "ctrl+alt+u", onTheRight ? QRect(1440, 0, 1720, 720) : QRect(0, 0, 720, 438)));
}

TEST_F(SnapSession, AFullScreenWindowIsLeftAsItIs)
{
    Window window(*session, "Full Screen");
    const QRect before = session->windowGeometry(window.id);
    session->run("wmctrl", {"-i", "-r", window.id, "-b", "add,fullscreen"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return hasState(window, "FULLSCREEN") && session->windowGeometry(window.id) != before; }));
    VirtualSession::waitFor([] { return false; }, 300);
    const QRect full = session->windowGeometry(window.id);
    const int start = orlo->log().size();
    const QRegularExpression leftAsItIs("is full screen: left as it is(.|\n)*is full screen: left as it is");
    session->key("ctrl+alt+u");
    session->key(nextDisplayKey);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return leftAsItIs.match(orlo->log().mid(start)).hasMatch(); })) << qPrintable(orlo->log());
    EXPECT_EQ(session->windowGeometry(window.id), full);
    // A full-screen window left behind takes the presses of later drags under metacity.
    session->run("xdotool", {"windowclose", window.id});
}

TEST_F(SnapSession, ATerminalCyclesThroughThePresetsInWholeCharacterCells)
{
    session->launch("xterm", {"-T", "Cells", "-geometry", "60x20+300+300"});
    QStringList found;
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !(found = session->findWindows("^Cells$")).isEmpty(); }));
    Window terminal;
    terminal.id = found.first();
    terminal.activate(*session);
    const QSize cell = resizeIncrement(*session, terminal.id);
    ASSERT_GT(cell.width(), 1) << "xterm asks for character cells";
    // The frame the terminal takes is at most one cell short of the area in each direction.
    auto fills = [&](int width) {
        const QRect f = session->frameGeometry(terminal.id);
        return f.topLeft() == QPoint(0, 0) && f.width() <= width && f.width() > width - cell.width() && f.height() <= 876
            && f.height() > 876 - cell.height();
    };
    for (int width : {720, 960, 480, 720}) {
        session->key(leftKey);
        EXPECT_TRUE(VirtualSession::waitFor([&] { return fills(width); }, 3000))
            << width << " wide; the terminal is " << session->frameGeometry(terminal.id).width();
    }
}

TEST_F(SnapSession, ALeftHandedMouseDragsWithItsRightButton)
{
    ASSERT_EQ(session->run("xmodmap", {"-e", "pointer = 3 2 1"}), 0);
    Window window(*session, "Left Handed", QRect(400, 300, 402, 325));
    dragTitleBar(window, QPoint(2, 450), 3);
    EXPECT_TRUE(previewShown("leftHalf", 3000, QRect(0, 0, 720, 876))) << qPrintable(orlo->log());
    session->mouseUp(3);
    EXPECT_TRUE(waitForFrame(window, QRect(0, 0, 720, 876)));
    session->run("xmodmap", {"-e", "pointer = 1 2 3"});
}

namespace {
// At two pixels per point, once by QT_SCALE_FACTOR and once by Xft.dpi: the left monitor is
// 720 by 450 points, the tray 12 points high, a gap of 10 points is 20 pixels, and the hot
// zones along the edges are 6 points (12 pixels) deep.
class SnapScaledSession : public SnapSession {
protected:
    // `scaledBy` names the screenshot: the two scaled suites may run at the same time.
    static void dragToTheLeftEdgePreviewsExactlyWhereTheWindowLands(const QString& scaledBy)
    {
        Window window(*session, "Scaled", QRect(400, 300, 402, 325));
        dragTitleBar(window, QPoint(10, 450));  // 5 points from the edge
        // Gap 10 points: the left half is (10, 10, 345, 418) points, (20, 20, 690, 836) pixels.
        const bool shown = previewShown("leftHalf", 3000, QRect(10, 10, 345, 418));
        EXPECT_TRUE(shown) << qPrintable(orlo->log());
        const QRect area(20, 20, 690, 836);
        // Under mutter's compositor a screenshot takes longer than the drag may last.
        if (shown && session->windowManager() != "mutter") {
            // The preview's outline lies 2 points inside that area, 2 points wide.
            const QRect outline = area.adjusted(4, 4, -4, -4);
            const QList<QPoint> on{QPoint(outline.left() + 1, 400), QPoint(outline.right() - 1, 400),
                                   QPoint(300, outline.top() + 1), QPoint(300, outline.bottom() - 1)};
            auto painted = [&](const QImage& image) {
                return std::all_of(on.begin(), on.end(), [&](QPoint p) { return accent(image, p); });
            };
            const QImage image = screenshotOnce(painted, "snap-preview-" + scaledBy + "-" + session->windowManager() + ".png");
            for (QPoint p : on) EXPECT_TRUE(accent(image, p)) << "at " << p.x() << "," << p.y();
            for (QPoint p : {QPoint(outline.left() - 3, 400), QPoint(300, outline.top() - 3)})
                EXPECT_FALSE(accent(image, p)) << "at " << p.x() << "," << p.y();
        }
        session->mouseUp();
        EXPECT_TRUE(waitForFrame(window, area));
    }
};

class SnapScaleFactorSession : public SnapScaledSession {
protected:
    static void SetUpTestSuite()
    {
        orloEnvironment.insert("QT_SCALE_FACTOR", "2");
        startSession({{"windows.gap", 10}});
    }
};

class SnapXftDpiSession : public SnapScaledSession {
protected:
    static void SetUpTestSuite()
    {
        startSession({{"windows.gap", 10}}, [] {
            const QString resources = session->home() + "/.Xresources-hidpi";
            QFile file(resources);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("Xft.dpi: 192\n");
            file.close();
            ASSERT_EQ(session->run("xrdb", {"-merge", resources}), 0);
        });
    }
};
}  // namespace

TEST_F(SnapScaleFactorSession, DragToTheLeftEdgePreviewsExactlyWhereTheWindowLands)
{
    dragToTheLeftEdgePreviewsExactlyWhereTheWindowLands("scale-factor-2");
}

TEST_F(SnapXftDpiSession, DragToTheLeftEdgePreviewsExactlyWhereTheWindowLands)
{
    dragToTheLeftEdgePreviewsExactlyWhereTheWindowLands("xft-dpi-192");
}
