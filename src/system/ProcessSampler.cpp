#include "system/ProcessSampler.h"
#include <algorithm>
#include <array>
#include <vector>

namespace orlo {

ProcessSampler::Result ProcessSampler::sample(const QList<RunningApp>& apps)
{
    Result result;
    result.cpu = totalCPU();
    result.processors = processors_;
    const MemoryUse memory = table_.memory().value_or(MemoryUse{});
    result.memoryUsed = memory.used;
    result.memoryTotal = memory.total;
    result.pressure = table_.memoryPressure().value_or(1);
    const quint64 now = table_.monotonicNanoseconds();
    const quint64 elapsed = lastWall_ && now > lastWall_ ? now - lastWall_ : 0;
    lastWall_ = now;
    result.apps = groups(apps, elapsed);
    return result;
}

double ProcessSampler::totalCPU()
{
    const auto ticks = table_.cpuTicks();
    if (!ticks) return 0;
    double percent = 0;
    if (!firstSample_ && ticks->total > lastTotal_ && ticks->busy >= lastBusy_)
        percent = std::min(100.0, double(ticks->busy - lastBusy_) / double(ticks->total - lastTotal_) * 100.0);
    lastBusy_ = ticks->busy;
    lastTotal_ = ticks->total;
    processors_ = std::max(1, ticks->processors);
    firstSample_ = false;
    return percent;
}

QStringList ProcessSampler::candidateBundles(const QString& path)
{
    QStringList bundles;
    QString prefix;
    for (const QString& component : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        prefix += QLatin1Char('/') + component;
        if (component.endsWith(QLatin1String(".app"))) bundles << prefix;
    }
    return bundles;
}

namespace {

// Which running application each process works for.
class Membership {
public:
    Membership(const QList<ProcessSampler::RunningApp>& apps, const QHash<qint64, ProcessRecord>& raws)
        : raws_(raws)
    {
        for (int i = 0; i < apps.size(); ++i) {
            byPid_.insert(apps[i].pid, i);
            for (const QString& path : apps[i].bundlePaths) byBundle_.insert(path, i);
            const QString unit = raws.value(apps[i].pid).launchUnit;
            if (!unit.isEmpty() && !byUnit_.contains(unit)) byUnit_.insert(unit, i);
            QString id = apps[i].bundleId;
            if (id.endsWith(QLatin1String(".desktop"))) id.chop(8);
            if (!id.isEmpty() && !bySandboxedApp_.contains(id)) bySandboxedApp_.insert(id, i);
        }
    }

    // The application the process is, or whose bundle it runs from; -1 for none.
    int direct(qint64 pid) const
    {
        if (const auto it = byPid_.constFind(pid); it != byPid_.constEnd()) return *it;
        const auto raw = raws_.constFind(pid);
        if (raw == raws_.constEnd() || byBundle_.isEmpty()) return -1;
        for (const QString& bundle : ProcessSampler::candidateBundles(raw->path))
            if (const auto it = byBundle_.constFind(bundle); it != byBundle_.constEnd()) return *it;
        return -1;
    }

    int ofAncestors(qint64 pid) const
    {
        std::array<qint64, ProcessSampler::MaxAncestorSteps + 1> seen{pid};
        qint64 current = pid;
        for (int step = 0; step < ProcessSampler::MaxAncestorSteps; ++step) {
            const auto raw = raws_.constFind(current);
            if (raw == raws_.constEnd() || raw->ppid < 2) return -1;
            if (std::find(seen.begin(), seen.begin() + step + 1, raw->ppid) != seen.begin() + step + 1) return -1;
            current = raw->ppid;
            seen[step + 1] = current;
            if (const int app = direct(current); app >= 0) return app;
        }
        return -1;
    }

    // The application whose process was launched in the same unit, or the sandboxed one the
    // process runs in: a Flatpak application's processes all run in its app-flatpak scope.
    int ofUnit(const ProcessRecord& raw) const
    {
        if (const auto it = byUnit_.constFind(raw.launchUnit); !raw.launchUnit.isEmpty() && it != byUnit_.constEnd()) return *it;
        return raw.sandboxedApp.isEmpty() ? -1 : bySandboxedApp_.value(raw.sandboxedApp, -1);
    }

private:
    const QHash<qint64, ProcessRecord>& raws_;
    QHash<qint64, int> byPid_;
    QHash<QString, int> byBundle_;
    QHash<QString, int> byUnit_;
    QHash<QString, int> bySandboxedApp_;
};

bool busierThan(double cpuA, quint64 memA, double cpuB, quint64 memB)
{
    return cpuA != cpuB ? cpuA > cpuB : memA > memB;
}

}  // namespace

QList<AppUsage> ProcessSampler::groups(const QList<RunningApp>& apps, quint64 elapsedNs)
{
    const QList<qint64> pids = table_.allPids();
    QHash<qint64, Raw> raws;
    raws.reserve(pids.size());
    QList<qint64> order;
    order.reserve(pids.size());
    for (qint64 pid : pids) {
        auto raw = table_.read(pid);
        if (!raw) continue;
        raws.insert(pid, std::move(*raw));
        order << pid;
    }

    QHash<qint64, quint64> cpuTimes;
    cpuTimes.reserve(order.size());
    auto cpuOf = [&](qint64 pid, const Raw& raw) {
        cpuTimes.insert(pid, raw.cpuTime);
        const auto last = lastCPUTime_.constFind(pid);
        if (elapsedNs == 0 || last == lastCPUTime_.constEnd() || raw.cpuTime < *last) return 0.0;
        return double(raw.cpuTime - *last) / (double(elapsedNs) * processors_) * 100.0;
    };

    const Membership membership(apps, raws);
    QList<AppUsage> groups(apps.size());
    for (int i = 0; i < apps.size(); ++i) {
        groups[i].pid = apps[i].pid;
        groups[i].name = apps[i].name;
        groups[i].isApp = true;
    }
    QList<AppUsage> loose;
    for (qint64 pid : std::as_const(order)) {
        const Raw& raw = raws[pid];
        // Others' processes only lead the way to their children.
        if (!raw.ownedByUser) continue;
        const ProcessUsage usage{pid, raw.name, raw.path, cpuOf(pid, raw), raw.memory, raw.startTime};
        int app = membership.direct(pid);
        if (app < 0) app = membership.ofAncestors(pid);
        if (app < 0)
            if (const auto responsible = table_.responsiblePid(pid); responsible && *responsible != pid)
                app = membership.direct(*responsible);
        if (app < 0) app = membership.ofUnit(raw);
        if (app < 0) {
            loose << AppUsage{pid, raw.name, raw.path, false, usage.cpu, usage.memory, {}, raw.startTime};
            continue;
        }
        AppUsage& group = groups[app];
        if (pid == group.pid) {
            group.path = raw.path;
            group.startTime = raw.startTime;
        }
        group.cpu += usage.cpu;
        group.memory += usage.memory;
        group.children << usage;
    }
    lastCPUTime_ = std::move(cpuTimes);

    for (AppUsage& group : groups) {
        std::stable_sort(group.children.begin(), group.children.end(), [](const ProcessUsage& a, const ProcessUsage& b) {
            return busierThan(a.cpu, a.memory, b.cpu, b.memory);
        });
    }
    groups.removeIf([](const AppUsage& group) { return group.children.isEmpty(); });  // ended, or not ours to read
    groups.append(std::move(loose));
    // Sorting the figures with their positions rather than the records themselves is
    // several times cheaper.
    struct Rank {
        double cpu;
        quint64 memory;
        qsizetype at;
    };
    std::vector<Rank> ranking;
    ranking.reserve(size_t(groups.size()));
    for (qsizetype i = 0; i < groups.size(); ++i) ranking.push_back({groups.at(i).cpu, groups.at(i).memory, i});
    std::stable_sort(ranking.begin(), ranking.end(), [](const Rank& a, const Rank& b) { return busierThan(a.cpu, a.memory, b.cpu, b.memory); });
    QList<AppUsage> result;
    result.reserve(groups.size());
    for (const Rank& rank : ranking) result << std::move(groups[rank.at]);
    return result;
}

}  // namespace orlo
