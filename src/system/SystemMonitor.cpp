#include "system/SystemMonitor.h"
#include "platform/ProcessTable.h"
#include "platform/Workspace.h"
#include "system/SystemLog.h"
#include <QDateTime>
#include <algorithm>
#include <vector>

namespace orlo {

SystemMonitor::SystemMonitor(ProcessTable& processes, Workspace& workspace, QObject* parent)
    : QObject(parent), processes_(processes), workspace_(workspace), sampler_(std::make_unique<ProcessSampler>(processes))
{
    clock = [] { return QDateTime::currentMSecsSinceEpoch(); };
    queue_.setObjectName(QStringLiteral("orlo.system.sampler"));
    queue_.setMaxThreadCount(1);
    queue_.setExpiryTimeout(30000);
    timer_.setInterval(TickMs);
    connect(&timer_, &QTimer::timeout, this, &SystemMonitor::tick);
}

SystemMonitor::~SystemMonitor()
{
    timer_.stop();
    queue_.waitForDone();
}

void SystemMonitor::start()
{
    if (timer_.isActive()) return;
    timer_.start();
    sampleNow();
}

void SystemMonitor::pause() { timer_.stop(); }

void SystemMonitor::addViewer()
{
    ++viewers_;
    // A view that opens long after the last slow sample should not wait ten seconds.
    if (timer_.isActive()) tick();
}

void SystemMonitor::removeViewer() { viewers_ = std::max(0, viewers_ - 1); }

void SystemMonitor::tick()
{
    const qint64 interval = viewers_ >= 1 ? WatchedIntervalMs : UnwatchedIntervalMs;
    const qint64 since = lastSample_ ? clock() - *lastSample_ : interval;
    // A clock set back (by hand, or by a time server's correction) starts the pace anew
    // instead of stopping it until the clock has caught up.
    if (since >= interval || since < 0) sampleNow();
}

QList<ProcessSampler::RunningApp> SystemMonitor::runningApps()
{
    QList<ProcessSampler::RunningApp> apps;
    bundleIds_.clear();
    for (const AppInfo& app : workspace_.runningApplications()) {
        if (app.pid < 1) continue;
        apps << ProcessSampler::RunningApp{app.pid, app.name.isEmpty() ? app.bundleId : app.name, app.bundlePaths, app.bundleId};
        bundleIds_.insert(app.pid, app.bundleId);
    }
    return apps;
}

void SystemMonitor::sampleNow()
{
    if (inFlight_) return;
    inFlight_ = true;
    lastSample_ = clock();
    const QList<ProcessSampler::RunningApp> apps = runningApps();
    ProcessSampler* sampler = sampler_.get();
    queue_.start([this, sampler, apps] {
        const ProcessSampler::Result result = sampler->sample(apps);
        QMetaObject::invokeMethod(this, [this, result] { apply(result); }, Qt::QueuedConnection);
    });
}

void SystemMonitor::apply(const ProcessSampler::Result& result)
{
    cpu_ = result.cpu;
    processors_ = result.processors;
    memoryUsed_ = result.memoryUsed;
    memoryTotal_ = result.memoryTotal;
    pressure_ = result.pressure;
    apps_ = result.apps;
    hasSample_ = true;

    const qint64 now = clock();
    // The busiest few, without their processes: the chart names applications only.
    std::vector<const AppUsage*> busiest;
    for (const AppUsage& app : apps_) busiest.push_back(&app);
    std::stable_sort(busiest.begin(), busiest.end(), [](const AppUsage* a, const AppUsage* b) { return a->cpu > b->cpu; });
    const auto cut = busiest.begin() + std::min<qsizetype>(TopPerSample, apps_.size());
    QList<AppUsage> top;
    for (auto it = busiest.begin(); it != cut; ++it) top << AppUsage{(*it)->pid, (*it)->name, (*it)->path, (*it)->isApp, (*it)->cpu, (*it)->memory, {}, (*it)->startTime};
    // Samples dated after now were taken by a clock since set back: they would never age out.
    history_.erase(std::remove_if(history_.begin(), history_.end(), [now](const UsageSample& s) { return s.date.toMSecsSinceEpoch() > now; }),
                   history_.end());
    history_ << UsageSample{QDateTime::fromMSecsSinceEpoch(now), result.cpu, top};
    const qint64 oldest = now - qint64(HistorySeconds) * 1000;
    const auto firstKept = std::find_if(history_.begin(), history_.end(),
                                        [oldest](const UsageSample& s) { return s.date.toMSecsSinceEpoch() >= oldest; });
    history_.erase(history_.begin(), firstKept);
    inFlight_ = false;
    if (lcSystem().isDebugEnabled()) {
        for (auto it = busiest.begin(); it != cut; ++it) {
            QStringList members;
            for (const ProcessUsage& p : (*it)->children) members << p.name;
            qCDebug(lcSystem, "sample: cpu %.0f%%, busy %s %.1f%% [%s]", result.cpu, qPrintable((*it)->name), (*it)->cpu,
                    qPrintable(members.join(QLatin1Char(' '))));
        }
    }
    emit changed();
}

QList<AppUsage> SystemMonitor::sorted(SortKey key) const
{
    QList<AppUsage> list = apps_;
    std::stable_sort(list.begin(), list.end(), [key](const AppUsage& a, const AppUsage& b) {
        return key == SortKey::Cpu ? a.cpu > b.cpu : a.memory > b.memory;
    });
    return list;
}

QString SystemMonitor::quit(const AppUsage& app, bool force)
{
    const QString ended = tr("“%1” had already quit.").arg(app.name);
    if (!processes_.isRunning(app.pid, app.startTime)) return ended;
    QString note;
    const bool closing = !force && app.isApp && workspace_.closeWindows(app.pid);
    if (closing) {
        note = tr("Unsaved changes in %1 may ask to save changes first.").arg(app.name);
    } else {
        switch (processes_.terminate(app.pid, app.startTime, force)) {
        case SignalResult::Ended: return ended;
        case SignalResult::NotPermitted: return tr("Orlo is not allowed to quit “%1”.").arg(app.name);
        case SignalResult::Sent: break;
        }
    }
    const QString stillRunning = force ? tr("“%1” is still running after Force Quit: it may be stuck waiting for a disk or device.")
                                 : closing ? tr("“%1” is still open: it may be waiting for an answer about unsaved changes.")
                                           : tr("“%1” is still running: it did not respond to Quit. Force Quit ends it at once.");
    QTimer::singleShot(quitGraceMs, this, [this, pid = app.pid, startTime = app.startTime, note = stillRunning.arg(app.name)] {
        if (processes_.isRunning(pid, startTime)) emit quitFailed(note);
    });
    return note;
}

QIcon SystemMonitor::icon(const AppUsage& app)
{
    const QString bundleId = bundleIds_.value(app.pid);
    if (!app.isApp || bundleId.isEmpty()) return {};
    if (const auto it = icons_.constFind(bundleId); it != icons_.constEnd()) return *it;
    const QIcon icon = workspace_.applicationIcon(bundleId);
    icons_.insert(bundleId, icon);
    return icon;
}

}  // namespace orlo
