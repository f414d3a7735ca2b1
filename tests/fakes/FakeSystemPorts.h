#pragma once
// Fakes of the system tools' ports: processes, gamma, power and the user's files.
#include "platform/Gamma.h"
#include "platform/PowerAssertion.h"
#include "platform/ProcessTable.h"
#include "platform/UserFiles.h"
#include <QHash>
#include <QMap>
#include <QMutex>
#include <QSet>

namespace orlo::fakes {

// Processes and counters set by the test; read from the sampler thread under a lock.
struct FakeProcessTable : ProcessTable {
    QMutex lock;
    std::optional<CpuTicks> ticks = CpuTicks{};
    std::optional<MemoryUse> memoryUse = MemoryUse{4'000, 16'000};
    std::optional<int> pressure;
    QMap<qint64, ProcessRecord> processes;
    QHash<qint64, qint64> responsible;
    quint64 now = 1'000'000'000;
    QList<QPair<qint64, bool>> terminated;
    QSet<qint64> refusing;  // signals to them are refused
    QSet<qint64> ignoring;  // they outlive a plain request to end
    QSet<qint64> unkillable;  // they outlive even a forced end

    // Each process started at its pid's own time unless told otherwise.
    void add(qint64 pid, qint64 ppid, const QString& name, quint64 cpuTime = 0, quint64 memory = 0, const QString& unit = {})
    {
        QMutexLocker hold(&lock);
        ProcessRecord record{.ppid = ppid, .path = QStringLiteral("/usr/bin/") + name, .name = name, .cpuTime = cpuTime, .memory = memory, .launchUnit = unit};
        record.startTime = quint64(pid) * 10;
        processes.insert(pid, record);
    }
    void setCpuTime(qint64 pid, quint64 cpuTime)
    {
        QMutexLocker hold(&lock);
        processes[pid].cpuTime = cpuTime;
    }
    std::optional<CpuTicks> cpuTicks() override { QMutexLocker hold(&lock); return ticks; }
    std::optional<MemoryUse> memory() override { QMutexLocker hold(&lock); return memoryUse; }
    std::optional<int> memoryPressure() override { QMutexLocker hold(&lock); return pressure; }
    QList<qint64> allPids() override { QMutexLocker hold(&lock); return processes.keys(); }
    std::optional<ProcessRecord> read(qint64 pid) override
    {
        QMutexLocker hold(&lock);
        if (!processes.contains(pid)) return std::nullopt;
        return processes.value(pid);
    }
    std::optional<qint64> responsiblePid(qint64 pid) override
    {
        QMutexLocker hold(&lock);
        if (!responsible.contains(pid)) return std::nullopt;
        return responsible.value(pid);
    }
    quint64 monotonicNanoseconds() override { QMutexLocker hold(&lock); return now; }
    bool isRunning(qint64 pid, quint64 startTime) override
    {
        QMutexLocker hold(&lock);
        return processes.contains(pid) && processes.value(pid).startTime == startTime;
    }
    SignalResult terminate(qint64 pid, quint64 startTime, bool force) override
    {
        if (!isRunning(pid, startTime)) return SignalResult::Ended;
        QMutexLocker hold(&lock);
        if (refusing.contains(pid)) return SignalResult::NotPermitted;
        terminated << qMakePair(pid, force);
        const bool survives = unkillable.contains(pid) || (!force && ignoring.contains(pid));
        if (!survives) processes.remove(pid);
        return SignalResult::Sent;
    }
};

// Displays with 4-entry tables that start as a straight ramp. Another program changes a
// display's tables with `current` directly.
struct FakeGamma : Gamma {
    QList<GammaDisplay> list{{1, QStringLiteral("Built-in"), QStringLiteral("1552-41002-0"), true}};
    QHash<quint32, int> capacities;
    QHash<quint32, GammaTables> current;
    QHash<QString, GammaTables> kept;  // the originals a crash would restore, by display key
    QList<QPair<quint32, GammaTables>> writes;
    int sets = 0;

    static GammaTables ramp() { return {{0, 0.25f, 0.5f, 1}, {0, 0.25f, 0.5f, 1}, {0, 0.25f, 0.5f, 1}}; }
    QList<GammaDisplay> displays() override { return list; }
    int capacity(quint32 id) override { return capacities.value(id, 4); }
    std::optional<GammaTables> read(quint32 id) override
    {
        if (capacity(id) == 0) return std::nullopt;
        return current.contains(id) ? current.value(id) : ramp();
    }
    bool set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original) override
    {
        ++sets;
        writes << qMakePair(display.id, tables);
        if (tables == original) kept.remove(display.key);
        else kept.insert(display.key, original);
        current.insert(display.id, tables);
        return true;
    }
    void forget(const GammaDisplay& display) override { kept.remove(display.key); }
    void reconnect() { emit displaysChanged(); }
};

struct FakePowerAssertion : PowerAssertion {
    bool refuse = false;
    quint32 next = 7;
    QHash<quint32, QString> held;  // assertion -> "display: <name>" or "keys: <name>"
    std::optional<quint32> take(const QString& what)
    {
        if (refuse) return std::nullopt;
        held.insert(next, what);
        return next++;
    }
    std::optional<quint32> preventDisplaySleep(const QString& name) override { return take("display: " + name); }
    std::optional<quint32> preventPowerKeys(const QString& name) override { return take("keys: " + name); }
    void release(quint32 assertion) override { held.remove(assertion); }
    // Every part of the system asked has answered no, after the assertion was handed out.
    void refuseLater(quint32 assertion) { emit refused(assertion); }
};

struct FakeUserFiles : UserFiles {
    QMutex lock;
    QList<CleanupLocation> locations;
    QHash<QString, quint64> sizes;  // by path
    QStringList trashed;
    QSet<QString> refused;
    quint64 trash = 0;
    bool emptied = false;

    QList<CleanupLocation> cleanupLocations() override { QMutexLocker hold(&lock); return locations; }
    quint64 sizeOnDisk(const QString& path, const std::atomic_bool&) override { QMutexLocker hold(&lock); return sizes.value(path); }
    bool moveToTrash(const QString& path, QString* error) override
    {
        QMutexLocker hold(&lock);
        if (refused.contains(path)) {
            *error = QStringLiteral("%1 is in use").arg(path);
            return false;
        }
        trashed << path;
        trash += sizes.take(path);
        return true;
    }
    quint64 trashSize(const std::atomic_bool&) override { QMutexLocker hold(&lock); return trash; }
    bool emptyTrash(QString*) override
    {
        QMutexLocker hold(&lock);
        emptied = true;
        trash = 0;
        return true;
    }
};

}  // namespace orlo::fakes
