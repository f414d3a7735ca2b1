#include "platform/wayland/kwin/KWinWorkspace.h"
#include "platform/wayland/kwin/KWinApplications.h"
#include "platform/wayland/kwin/KWinDesktop.h"
#include <QCoreApplication>
#include <algorithm>

namespace orlo::kwin {

KWinWorkspace::KWinWorkspace(KWinDesktop& desktop, KWinApplications& apps, QObject* parent)
    : Workspace(parent), desktop_(desktop), apps_(apps)
{
    lastFront_ = frontmostApplication();
    connect(&desktop_, &KWinDesktop::activeChanged, this, [this] {
        const auto front = frontmostApplication();
        if (!front || front == lastFront_) return;
        lastFront_ = front;
        emit applicationActivated(*front);
    });
}

std::optional<AppInfo> KWinWorkspace::frontmostApplication()
{
    const KWinWindow* active = desktop_.activeWindow();
    return active ? std::optional(apps_.applicationOf(*active)) : std::nullopt;
}

qint64 KWinWorkspace::ownPid() const { return QCoreApplication::applicationPid(); }

void KWinWorkspace::activateApplication(const AppInfo& app)
{
    for (const KWinWindow* w : desktop_.byRecency())
        if (app.pid ? w->pid == app.pid : apps_.applicationOf(*w).bundleId == app.bundleId)
            return desktop_.activate(desktop_.idOf(*w), true);
}

QIcon KWinWorkspace::applicationIcon(const QString& bundleId) { return apps_.icon(bundleId); }

QString KWinWorkspace::applicationsFolder() { return DesktopEntries::applicationsFolder(); }

std::optional<AppInfo> KWinWorkspace::applicationAt(const QString& path) { return DesktopEntries::applicationAt(path); }

QList<AppInfo> KWinWorkspace::runningApplications()
{
    QList<AppInfo> apps;
    for (const KWinWindow* w : desktop_.topFirst()) {
        if (w->pid < 1) continue;
        if (std::none_of(apps.cbegin(), apps.cend(), [&](const AppInfo& a) { return a.pid == w->pid; }))
            apps << apps_.applicationOf(*w);
    }
    return apps;
}

bool KWinWorkspace::closeWindows(qint64 pid)
{
    const QList<const KWinWindow*> all = desktop_.topFirst();
    if (std::none_of(all.cbegin(), all.cend(), [&](const KWinWindow* w) { return w->pid == pid; })) return false;
    desktop_.closeWindows(pid);
    return true;
}

}  // namespace orlo::kwin
