#pragma once
#include "platform/ProcessTable.h"
#include <QByteArrayView>
#include <QHash>

namespace orlo {

// Processes, processors and memory as /proc tells them. A process's executable and launch
// unit are read once and kept while the same process (pid, start time and name) lives.
// Most processes sleep: for a single-threaded one, an open /proc/PID/schedstat re-read in
// place tells in about a microsecond whether it ran since the last look, and only then is
// its stat read again (and every RefreshEvery-th look anyway, for memory it lost while
// asleep and a parent that ended). Kernel threads are not programs and are left out.
// Not thread-safe: one sampler thread uses it.
class ProcFsProcessTable : public ProcessTable {
public:
    explicit ProcFsProcessTable(const QString& procRoot = QStringLiteral("/proc"));
    ~ProcFsProcessTable() override;

    std::optional<CpuTicks> cpuTicks() override;
    std::optional<MemoryUse> memory() override;
    std::optional<int> memoryPressure() override;
    QList<qint64> allPids() override;
    std::optional<ProcessRecord> read(qint64 pid) override;
    quint64 monotonicNanoseconds() override;
    bool terminate(qint64 pid, bool force) override;

    // The texts of /proc read apart from the files, each as the kernel writes it; nothing
    // when a text is not what the kernel writes.
    // The innermost "app-…" unit of a /proc/PID/cgroup text; empty when there is none.
    static QString launchUnit(const QByteArray& cgroup);
    // The level of a /proc/pressure/memory text: 1 normal, 2 warning, 4 critical.
    static std::optional<int> pressureLevel(const QByteArray& text);
    // The first line of /proc/stat.
    static std::optional<CpuTicks> cpuTicks(const QByteArray& stat);
    // /proc/meminfo.
    static std::optional<MemoryUse> memory(const QByteArray& meminfo);
    // What Orlo uses of a /proc/PID/stat line.
    struct Stat {
        QByteArrayView comm;  // within the text
        qint64 ppid = 0;
        quint64 cpuTicks = 0;  // user + system
        int threads = 0;
        quint64 startTime = 0;
        quint64 residentPages = 0;
    };
    // text holds length bytes and a '\0' after them.
    static std::optional<Stat> stat(const char* text, qsizetype length);
    // The run time, in nanoseconds, at the start of a /proc/PID/schedstat text ending in '\0'.
    static quint64 runTime(const char* schedstat);

    static constexpr int RefreshEvery = 30;

private:
    struct Known {
        quint64 startTime = 0;
        QByteArray comm;
        QString path;
        QString name;
        QString unit;
        ProcessRecord record;  // as of the last stat read
        int threads = 0;
        int schedstat = -1;    // open while the process is single-threaded
        quint64 runTime = 0;
        int looksSinceRead = 0;
    };
    QByteArray readSmall(const char* relativePath) const;
    std::optional<ProcessRecord> readStat(qint64 pid);
    void forget(qint64 pid);

    int rootFd_ = -1;
    quint64 ticksPerSecond_;
    quint64 pageSize_;
    QHash<qint64, Known> known_;
    int openFiles_ = 0;
    int fileBudget_ = 0;
};

}  // namespace orlo
