#pragma once
#include "platform/Workspace.h"
#include "platform/linux/DesktopEntries.h"
#include <QIcon>
#include <optional>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// Which application a top-level window belongs to: the desktop entry it came from (named by
// the window's GTK application id, its Flatpak or Snap sandbox, or its WM_CLASS) together
// with the process that owns it. One process may show several applications (an office
// suite's writer and spreadsheet), so the switcher tells windows apart by both. The switcher
// and the system monitor both ask here.
class WindowApplications {
public:
    explicit WindowApplications(XConnection& x);

    // Nothing when the window says nothing about itself. The pid is 0 when the owning
    // process is not on this machine or cannot be known.
    std::optional<AppInfo> applicationOf(xcb_window_t window);
    // The desktop entry's icon; else the icon a window of the application carries itself.
    QIcon applicationIcon(const QString& bundleId);
    // The application a desktop file stands for (pid 0).
    std::optional<AppInfo> applicationAt(const QString& path);

private:
    // The process of the client that made the window, as the server knows it: a sandboxed
    // client's own _NET_WM_PID counts inside its sandbox, and a remote one's on its host.
    std::optional<qint64> owningPid(xcb_window_t window);
    QIcon windowIcon(xcb_window_t window);

    XConnection& x_;
    DesktopEntries entries_;
    bool serverKnowsClients_ = false;
};

}  // namespace orlo::x11
