#pragma once
#include <QList>
#include <QPointF>
#include <QRectF>
#include <optional>

namespace orlo {

// A top-level window of any application, as the window system knows it.
using WindowId = quint64;

struct WindowRef {
    WindowId id = 0;
    qint64 pid = 0;
};

// Other applications' windows: finding them, reading and changing their frames. Frames and
// points are in top-left ("accessibility") coordinates, see Geometry.h. A frame is the
// window as the user sees it, title bar and borders included. Every call fails quietly:
// an absent result, an empty list, a change that does not happen.
class WindowServer {
public:
    virtual ~WindowServer() = default;

    virtual std::optional<QRectF> frame(WindowId window) = 0;
    // Moves and resizes; reports nothing.
    virtual void setFrame(WindowId window, const QRectF& frame) = 0;
    // An ordinary document or application window, not a dialog, panel, menu or dock.
    virtual bool isStandard(WindowId window) = 0;
    virtual bool isMinimized(WindowId window) = 0;
    virtual bool isFullScreen(WindowId window) = 0;
    // Whether the window shows on the desktop (workspace) in use; sticky windows do.
    virtual bool isOnCurrentDesktop(WindowId window)
    {
        Q_UNUSED(window);
        return true;
    }
    // The frame closest to the wanted one that the window can take: windows that grow in
    // steps (terminals by character cells) round their size down to a whole step.
    virtual QRectF attainableFrame(WindowId window, const QRectF& wanted)
    {
        Q_UNUSED(window);
        return wanted;
    }

    // The top-level window under a point.
    virtual std::optional<WindowRef> windowAt(const QPointF& point) = 0;
    // Every window of an application, in the order the application lists them.
    virtual QList<WindowId> windows(qint64 pid) = 0;
    // The window of an application that has the keyboard focus, if the application is in front.
    virtual std::optional<WindowId> focusedWindow(qint64 pid) = 0;
    // The application's frontmost window.
    virtual std::optional<WindowId> mainWindow(qint64 pid) = 0;
    // Processes that own ordinary windows the user can switch to.
    virtual QList<qint64> regularApplications() = 0;

    // Whether windows may be drawn partly transparent (on X11, only under a compositor).
    virtual bool canShowTranslucentWindows() = 0;
};

}  // namespace orlo
