#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QCoreApplication>
#include <algorithm>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace orlo::x11 {

X11Workspace::X11Workspace(XConnection& x, QObject* parent) : Workspace(parent), x_(x), apps_(x)
{
    const xcb_atom_t active = x_.atom("_NET_ACTIVE_WINDOW");
    listener_ = x_.addListener([this, active](xcb_generic_event_t* event) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return;
        auto* notify = reinterpret_cast<xcb_property_notify_event_t*>(event);
        if (notify->window != x_.root() || notify->atom != active) return;
        const auto window = x_.cardinal(x_.root(), active, XCB_ATOM_WINDOW);
        const auto front = frontmostApplication();
        if (front && window && *window) lastWindowOfPid_.insert(front->pid, *window);
        if (!front || front == lastFront_) return;
        lastFront_ = front;
        emit applicationActivated(*front);
    });
    lastFront_ = frontmostApplication();
}

X11Workspace::~X11Workspace() { x_.removeListener(listener_); }

qint64 X11Workspace::ownPid() const { return QCoreApplication::applicationPid(); }

std::optional<AppInfo> X11Workspace::frontmostApplication()
{
    const auto window = x_.cardinal(x_.root(), x_.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    if (!window || !*window) return std::nullopt;
    return applicationOf(*window);
}

std::optional<AppInfo> X11Workspace::applicationOf(xcb_window_t window) { return apps_.applicationOf(window); }

void X11Workspace::activateApplication(const AppInfo& app)
{
    const QList<xcb_window_t> windows = x_.clientWindows();
    xcb_window_t target = XCB_NONE;
    // The window the user last had in front, while it still exists; else the topmost one.
    if (const xcb_window_t last = lastWindowOfPid_.value(app.pid, XCB_NONE); last && windows.contains(last))
        target = last;
    for (qsizetype i = 0; !target && i < windows.size(); ++i) {
        const auto owner = applicationOf(windows[i]);
        if (owner && (app.pid ? owner->pid == app.pid : owner->bundleId == app.bundleId)) target = windows[i];
    }
    if (!target) return;
    // As a pager asks: the user chose this window, so no focus-stealing rules apply.
    xcb_ewmh_request_change_active_window(x_.ewmh(), 0, target, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER, XCB_CURRENT_TIME, XCB_NONE);
    x_.flush();
}

QIcon X11Workspace::applicationIcon(const QString& bundleId) { return apps_.applicationIcon(bundleId); }

QString X11Workspace::applicationsFolder() { return DesktopEntries::applicationsFolder(); }

std::optional<AppInfo> X11Workspace::applicationAt(const QString& path) { return apps_.applicationAt(path); }

QList<AppInfo> X11Workspace::runningApplications()
{
    QList<AppInfo> apps;
    for (xcb_window_t window : x_.clientWindows()) {
        const auto app = applicationOf(window);
        if (!app || app->pid < 1) continue;
        if (std::none_of(apps.cbegin(), apps.cend(), [&](const AppInfo& a) { return a.pid == app->pid; })) apps << *app;
    }
    return apps;
}

bool X11Workspace::closeWindows(qint64 pid)
{
    bool any = false;
    for (xcb_window_t window : x_.clientWindows()) {
        if (const auto owner = applicationOf(window); !owner || owner->pid != pid) continue;
        xcb_ewmh_request_close_window(x_.ewmh(), 0, window, XCB_CURRENT_TIME, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
        any = true;
    }
    x_.flush();
    return any;
}

}  // namespace orlo::x11
