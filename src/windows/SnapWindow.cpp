#include "windows/SnapWindow.h"

namespace orlo {

std::optional<SnapWindow> SnapWindow::at(WindowServer& server, const QPointF& point)
{
    const auto ref = server.windowAt(point);
    if (!ref) return std::nullopt;
    return SnapWindow(server, ref->id, ref->pid);
}

QList<SnapWindow> SnapWindow::windows(WindowServer& server, qint64 pid)
{
    QList<SnapWindow> list;
    for (WindowId id : server.windows(pid)) list << SnapWindow(server, id, pid);
    return list;
}

std::optional<SnapWindow> SnapWindow::focused(WindowServer& server, qint64 pid)
{
    if (auto id = server.focusedWindow(pid)) return SnapWindow(server, *id, pid);
    if (auto id = server.mainWindow(pid)) return SnapWindow(server, *id, pid);
    const QList<WindowId> all = server.windows(pid);
    if (all.isEmpty()) return std::nullopt;
    return SnapWindow(server, all.first(), pid);
}

}  // namespace orlo
