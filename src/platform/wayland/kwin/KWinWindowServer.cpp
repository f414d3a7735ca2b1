#include "platform/wayland/kwin/KWinWindowServer.h"
#include "platform/wayland/kwin/KWinDesktop.h"

namespace orlo::kwin {

namespace {
bool shown(const KWinWindow& w) { return !w.minimized && w.onCurrentDesktop; }
}  // namespace

bool KWinWindowServer::flag(WindowId window, bool KWinWindow::*which) const
{
    const KWinWindow* w = desktop_.window(window);
    return w && w->*which;
}

std::optional<QRectF> KWinWindowServer::frame(WindowId window)
{
    const KWinWindow* w = desktop_.window(window);
    return w ? std::optional(desktop_.frameOf(*w)) : std::nullopt;
}

void KWinWindowServer::setFrame(WindowId window, const QRectF& frame) { desktop_.setFrame(window, frame); }

bool KWinWindowServer::isStandard(WindowId window) { return flag(window, &KWinWindow::normal); }

bool KWinWindowServer::isMinimized(WindowId window) { return flag(window, &KWinWindow::minimized); }

bool KWinWindowServer::isFullScreen(WindowId window) { return flag(window, &KWinWindow::fullScreen); }

bool KWinWindowServer::isOnCurrentDesktop(WindowId window) { return flag(window, &KWinWindow::onCurrentDesktop); }

std::optional<WindowRef> KWinWindowServer::windowAt(const QPointF& point)
{
    for (const KWinWindow* w : desktop_.topFirst())
        if (shown(*w) && desktop_.frameOf(*w).contains(point)) return WindowRef{desktop_.idOf(*w), w->pid};
    return std::nullopt;
}

QList<WindowId> KWinWindowServer::windows(qint64 pid)
{
    QList<WindowId> list;
    for (const KWinWindow* w : desktop_.topFirst())
        if (w->pid == pid) list << desktop_.idOf(*w);
    return list;
}

std::optional<WindowId> KWinWindowServer::focusedWindow(qint64 pid)
{
    const KWinWindow* active = desktop_.activeWindow();
    return active && active->pid == pid ? std::optional(desktop_.idOf(*active)) : std::nullopt;
}

std::optional<WindowId> KWinWindowServer::mainWindow(qint64 pid)
{
    for (const KWinWindow* w : desktop_.byRecency())
        if (w->pid == pid && shown(*w)) return desktop_.idOf(*w);
    return std::nullopt;
}

QList<qint64> KWinWindowServer::regularApplications()
{
    QList<qint64> pids;
    for (const KWinWindow* w : desktop_.topFirst())
        if (w->pid && w->normal && !w->skipTaskbar && !pids.contains(w->pid)) pids << w->pid;
    return pids;
}

}  // namespace orlo::kwin
