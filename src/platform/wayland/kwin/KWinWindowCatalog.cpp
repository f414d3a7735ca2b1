#include "platform/wayland/kwin/KWinWindowCatalog.h"
#include "platform/wayland/kwin/KWinApplications.h"
#include "platform/wayland/kwin/KWinDesktop.h"

namespace orlo::kwin {

namespace {
// A window that task lists show and the user switches to.
bool switchable(const KWinWindow& w) { return (w.normal || w.dialog) && !w.skipTaskbar; }
}  // namespace

QList<RunningApp> KWinWindowCatalog::runningApplications()
{
    QList<RunningApp> apps;
    for (const KWinWindow* w : desktop_.byRecency()) {
        const AppInfo app = apps_.applicationOf(*w);
        auto same = [&](const RunningApp& r) { return r.pid == app.pid && r.bundleId == app.bundleId; };
        auto it = std::find_if(apps.begin(), apps.end(), same);
        if (it == apps.end()) it = apps.insert(apps.end(), RunningApp{app.pid, app.bundleId, app.name, false});
        it->regular = it->regular || (w->normal && !w->skipTaskbar);
    }
    return apps;
}

QList<ScreenWindow> KWinWindowCatalog::onScreenWindows()
{
    QList<ScreenWindow> list;
    for (const KWinWindow* w : desktop_.byRecency()) {
        if (w->minimized || !w->onCurrentDesktop) continue;
        const WindowId id = desktop_.idOf(*w);
        list << ScreenWindow{quint32(id), w->pid, 0, desktop_.frameOf(*w), 1.0, w->title, apps_.applicationOf(*w).bundleId};
    }
    return list;
}

std::optional<QList<AppWindow>> KWinWindowCatalog::applicationWindows(const RunningApp& app)
{
    QList<AppWindow> list;
    for (const KWinWindow* w : desktop_.byRecency()) {
        if (w->pid != app.pid || !w->onCurrentDesktop || apps_.applicationOf(*w).bundleId != app.bundleId) continue;
        const WindowId id = desktop_.idOf(*w);
        list << AppWindow{id, quint32(id), w->title, desktop_.frameOf(*w), w->minimized, switchable(*w)};
    }
    return list;
}

void KWinWindowCatalog::raise(WindowId element, bool unminimize) { desktop_.activate(element, unminimize); }

void KWinWindowCatalog::activate(qint64 pid)
{
    for (const KWinWindow* w : desktop_.byRecency())
        if (w->pid == pid && switchable(*w)) return desktop_.activate(desktop_.idOf(*w), true);
}

}  // namespace orlo::kwin
