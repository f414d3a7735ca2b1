#pragma once
#include "platform/ProcessTable.h"
#include <QByteArrayView>
#include <QHash>
#include <ctime>
#include <sys/types.h>

namespace orlo {

// Processes, processors and memory as /proc tells them. What stays fixed for a process's life
// (executable, launch unit, owner) is read once and kept while the same process (pid, start
// time and name) lives. A process's CPU clock tells in one system call, with no file opened,
// whether it ran since the last look; only then is its stat read again (and every
// RefreshEvery-th look anyway, for memory it lost while asleep and a parent that ended).
// Kernel threads are not programs and are left out.
// Not thread-safe, except terminate() and isRunning(): one sampler thread uses the rest.
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
    SignalResult terminate(qint64 pid, quint64 startTime, bool force) override;
    bool isRunning(qint64 pid, quint64 startTime) override;

    // The texts of /proc read apart from the files, each as the kernel writes it; nothing
    // when a text is not what the kernel writes.
    // The innermost "app-…" unit of a /proc/PID/cgroup text; empty when there is none.
    static QString launchUnit(const QByteArray& cgroup);
    // The level of a /proc/pressure/memory text: 1 normal, 2 warning, 4 critical.
    static std::optional<int> pressureLevel(const QByteArray& text);
    // /proc/stat: the first line, and the processors it sums.
    static std::optional<CpuTicks> cpuTicks(const QByteArray& stat);
    // /proc/meminfo.
    static std::optional<MemoryUse> memory(const QByteArray& meminfo);
    // The real and saved user ids of a /proc/PID/status text.
    struct Owner {
        uid_t real = 0;
        uid_t saved = 0;
    };
    static std::optional<Owner> owner(const QByteArray& status);
    // What Orlo uses of a /proc/PID/stat line.
    struct Stat {
        QByteArrayView comm;  // within the text
        char state = 0;
        qint64 ppid = 0;
        quint64 cpuTicks = 0;  // user + system
        quint64 startTime = 0;
        quint64 residentPages = 0;
    };
    // text holds length bytes and a '\0' after them.
    static std::optional<Stat> stat(const char* text, qsizetype length);

    static constexpr int RefreshEvery = 30;

private:
    struct Known {
        quint64 startTime = 0;
        QByteArray comm;
        bool kernelThread = false;
        clockid_t clock = 0;
        quint64 cpuTime = 0;   // the clock at the last look
        ProcessRecord record;  // as of the last stat read
        int looksSinceRead = 0;
    };
    QByteArray readSmall(const char* relativePath) const;
    std::optional<Stat> readStat(qint64 pid, char (&text)[1024]) const;
    std::optional<ProcessRecord> readAll(qint64 pid);
    Known learn(qint64 pid, const Stat& fields) const;

    int rootFd_ = -1;
    bool liveClocks_ = false;
    uid_t user_;
    quint64 ticksPerSecond_;
    quint64 pageSize_;
    QHash<qint64, Known> known_;
};

}  // namespace orlo
