#include "switcher/WindowList.h"
#include "kit/Symbols.h"
#include "platform/Workspace.h"
#include <algorithm>
#include <cmath>

namespace orlo {

namespace {
constexpr double frameTolerance = 3;

bool framesMatch(const QRectF& a, const QRectF& b)
{
    return std::abs(a.x() - b.x()) < frameTolerance && std::abs(a.y() - b.y()) < frameTolerance
        && std::abs(a.width() - b.width()) < frameTolerance && std::abs(a.height() - b.height()) < frameTolerance;
}

QString displayName(const RunningApp& app) { return app.name.isEmpty() ? QStringLiteral("App") : app.name; }
}  // namespace

QIcon WindowList::icon(const QString& bundleId)
{
    // Cached by the application's identity: a process id may come back as another program.
    if (bundleId.isEmpty()) return symbolIcon(QStringLiteral("app"));
    if (auto it = icons_.constFind(bundleId); it != icons_.constEnd()) return *it;
    QIcon found = workspace_.applicationIcon(bundleId);
    if (found.isNull()) found = symbolIcon(QStringLiteral("app"));
    icons_.insert(bundleId, found);
    return found;
}

QList<RunningApp> WindowList::eligibleApplications(const QSet<QString>& excluded, const QList<qint64>& appOrder)
{
    const qint64 own = workspace_.ownPid();
    QList<RunningApp> apps;
    for (const RunningApp& app : catalog_.runningApplications())
        if (app.regular && app.pid != own && !excluded.contains(app.bundleId)) apps << app;
    QHash<qint64, qsizetype> position;
    for (qsizetype i = 0; i < appOrder.size(); ++i)
        if (!position.contains(appOrder[i])) position.insert(appOrder[i], i);
    std::stable_sort(apps.begin(), apps.end(), [&](const RunningApp& a, const RunningApp& b) {
        const auto pa = position.constFind(a.pid), pb = position.constFind(b.pid);
        if (pa == position.constEnd() || pb == position.constEnd()) return pa != position.constEnd() && pb == position.constEnd();
        return *pa < *pb;
    });
    return apps;
}

QList<SwitchItem> WindowList::current(bool includeMinimized, const QSet<QString>& excluded, const QList<qint64>& appOrder)
{
    const QList<RunningApp> apps = eligibleApplications(excluded, appOrder);
    QMultiHash<qint64, const RunningApp*> byPid;
    for (const RunningApp& app : apps) byPid.insert(app.pid, &app);
    // The window's own application among those of its process.
    auto ownerOf = [&](const ScreenWindow& entry) -> const RunningApp* {
        for (auto it = byPid.constFind(entry.pid); it != byPid.constEnd() && it.key() == entry.pid; ++it)
            if (entry.bundleId.isEmpty() || (*it)->bundleId == entry.bundleId) return *it;
        return nullptr;
    };

    QHash<const RunningApp*, QList<AppWindow>> appWindows;
    auto windowsOf = [&](const RunningApp& app) -> const QList<AppWindow>& {
        auto it = appWindows.find(&app);
        if (it == appWindows.end()) it = appWindows.insert(&app, catalog_.applicationWindows(app).value_or(QList<AppWindow>()));
        return *it;
    };

    QList<SwitchItem> items;
    // Each application window pairs once, even when two look exactly alike.
    QSet<const AppWindow*> paired;
    for (const ScreenWindow& entry : catalog_.onScreenWindows()) {
        if (entry.layer != 0 || !entry.number || !entry.alpha || *entry.alpha <= 0) continue;
        const RunningApp* app = ownerOf(entry);
        if (!app || entry.bounds.width() < MinWidth || entry.bounds.height() < MinHeight) continue;

        const QList<AppWindow>& own = windowsOf(*app);
        const AppWindow* match = nullptr;
        for (const AppWindow& w : own)
            if (!match && w.number && *w.number == entry.number) match = &w;
        for (qsizetype i = 0; !match && i < own.size(); ++i)
            if (!paired.contains(&own[i]) && framesMatch(own[i].frame, entry.bounds)) match = &own[i];
        if (!own.isEmpty() && (!match || !match->standard)) continue;
        if (match) paired.insert(match);

        SwitchItem item;
        item.id = QStringLiteral("w%1").arg(entry.number);
        item.pid = app->pid;
        item.appName = displayName(*app);
        item.icon = icon(app->bundleId);
        item.title = match && !match->title.isEmpty() ? match->title : entry.name;
        if (item.title.isEmpty()) item.title = item.appName;
        item.kind = SwitchItem::Window{match ? std::optional<WindowId>(match->element) : std::nullopt, entry.number, false};
        items << item;
    }

    if (!includeMinimized) return items;
    // Numbered per process, which may show several applications.
    QHash<qint64, int> running;
    for (const RunningApp& app : apps) {
        for (const AppWindow& w : windowsOf(app)) {
            if (!w.minimized || !w.standard) continue;
            SwitchItem item;
            item.id = w.number ? QStringLiteral("w%1").arg(*w.number) : QStringLiteral("m%1-%2").arg(app.pid).arg(running[app.pid]++);
            item.pid = app.pid;
            item.appName = displayName(app);
            item.icon = icon(app.bundleId);
            item.title = w.title.isEmpty() ? item.appName : w.title;
            item.kind = SwitchItem::Window{w.element, w.number.value_or(0), true};
            items << item;
        }
    }
    return items;
}

}  // namespace orlo
