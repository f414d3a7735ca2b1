#pragma once
#include "platform/WindowServer.h"
#include <QHash>
#include <functional>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <xcb/xcb.h>
#include <xcb/xcb_icccm.h>

namespace orlo::x11 {

class XConnection;

// Windows of other clients through the EWMH window manager. A window is its client window;
// its frame includes the decorations the window manager draws (_NET_FRAME_EXTENTS) and
// leaves out the invisible margins of client-side-decorated windows (_GTK_FRAME_EXTENTS).
// Top-left coordinates start at the primary monitor's corner.
class X11WindowServer : public WindowServer {
public:
    explicit X11WindowServer(XConnection& x);

    std::optional<QRectF> frame(WindowId window) override;
    void setFrame(WindowId window, const QRectF& frame) override;
    bool isStandard(WindowId window) override;
    bool isMinimized(WindowId window) override;
    bool isFullScreen(WindowId window) override;
    bool isOnCurrentDesktop(WindowId window) override;
    QRectF attainableFrame(WindowId window, const QRectF& wanted) override;
    std::optional<WindowRef> windowAt(const QPointF& point) override;
    QList<WindowId> windows(qint64 pid) override;
    std::optional<WindowId> focusedWindow(qint64 pid) override;
    std::optional<WindowId> mainWindow(qint64 pid) override;
    QList<qint64> regularApplications() override;
    bool canShowTranslucentWindows() override;

    // How long a window manager and a client get to answer an un-maximize request.
    static constexpr int maximizeAnswerMs = 300;
    // How long a window manager gets to carry out a move before the window is measured
    // again: its decorations changed, or held where it was.
    static constexpr int tiledCheckMs = 200;

private:
    struct Extents {
        int left = 0, right = 0, top = 0, bottom = 0;
        bool operator==(const Extents&) const = default;
    };
    // The window manager's decorations, and the invisible margins a client draws itself.
    struct Margins {
        Extents decorations;
        Extents invisible;
        bool operator==(const Margins&) const = default;
    };
    struct MarginRequests {
        xcb_get_property_cookie_t decorations, invisible;
    };
    struct MoveResize {
        int x = 0, y = 0, width = 1, height = 1;
        bool isStatic = false;
    };
    // The request that puts a window's frame (pixels on the root window) in place.
    static MoveResize moveResize(const QRect& frame, const Margins& margins, bool isStatic);
    void send(xcb_window_t window, const MoveResize& request);
    // Puts a window, no longer maximized, at a frame (pixels on the root window) and checks a
    // moment later that the window manager carried the move out.
    void place(xcb_window_t window, const QRect& frame, int serial);
    // A window manager that held the window where it was (KWin keeps the windows it tiled):
    // maximized and restored, the window is free to move again.
    void freeAndSend(xcb_window_t window, const MoveResize& request);
    // Runs `then` once `settled` holds or `timeoutMs` have passed, looking every 2 ms from the
    // event loop: a window manager that answers late never holds up Orlo's panels and keys.
    void afterSettling(std::function<bool()> settled, int timeoutMs, std::function<void()> then);
    // The client window's place on the root window, without decorations.
    QRect clientGeometry(xcb_window_t window);
    MarginRequests requestMargins(xcb_window_t window);
    Margins margins(const MarginRequests& requests);
    QList<xcb_window_t> clients(bool stacking);
    QList<qint64> pids(const QList<xcb_window_t>& windows);
    // The frame a window of these margins and size hints takes when asked for another.
    static QRect attainable(const QRect& frame, const Margins& margins, const xcb_size_hints_t* hints);
    bool isMaximized(xcb_window_t window);
    // Takes a window out of the maximized state and runs `then` once the window manager and
    // the client have answered; at once when it was not maximized.
    void leaveMaximized(xcb_window_t window, std::function<void()> then);
    QList<xcb_atom_t> atoms(xcb_window_t window, xcb_atom_t property);
    QList<quint32> cardinals(xcb_window_t window, xcb_atom_t property);
    bool hasState(xcb_window_t window, xcb_atom_t state);
    xcb_window_t clientUnder(xcb_window_t window, int depth);
    // The top-level window drawn at a root position.
    xcb_window_t topLevelAt(int x, int y);

    XConnection& x_;
    xcb_atom_t wmState_;
    xcb_atom_t gtkExtents_;
    QHash<xcb_window_t, int> latestMove_;  // per window, the move the pending check belongs to
    QObject context_;  // ends the checks still waiting when the server goes
};

}  // namespace orlo::x11
