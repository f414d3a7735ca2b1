#pragma once
#include "platform/ProcessTable.h"
#include "system/AppUsage.h"
#include <QHash>
#include <QStringList>

namespace orlo {

// Measures the machine's CPU and memory and each process's share, grouped under the
// running applications. Only the user's own processes are listed: the machine's figures
// count everyone's. Keeps the previous sample's counters to turn them into rates, so one
// instance serves one caller at a time (the sampler thread).
class ProcessSampler {
public:
    using Raw = ProcessRecord;
    struct RunningApp {
        qint64 pid = 0;
        QString name;
        QStringList bundlePaths;
        QString bundleId{};  // its desktop-file id on Linux
    };
    struct Result {
        double cpu = 0;
        int processors = 1;
        quint64 memoryUsed = 0;
        quint64 memoryTotal = 0;
        int pressure = 1;
        QList<AppUsage> apps;
    };
    static constexpr int MaxAncestorSteps = 32;

    explicit ProcessSampler(ProcessTable& table) : table_(table) {}

    Result sample(const QList<RunningApp>& apps);
    // Percent of all processors busy since the previous call; 0 the first time.
    double totalCPU();
    // A process's CPU is a percent of the whole machine, as totalCPU() is.
    QList<AppUsage> groups(const QList<RunningApp>& apps, quint64 elapsedNs);
    // Every prefix of a path that names an application bundle, outermost first.
    static QStringList candidateBundles(const QString& path);

private:
    ProcessTable& table_;
    quint64 lastBusy_ = 0;
    quint64 lastTotal_ = 0;
    int processors_ = 1;
    bool firstSample_ = true;
    QHash<qint64, quint64> lastCPUTime_;
    quint64 lastWall_ = 0;
};

}  // namespace orlo
