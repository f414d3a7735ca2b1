#pragma once
#include <QList>
#include <QString>
#include <optional>

namespace orlo {

// Busy (user + system + nice) and total CPU ticks of all processors since boot.
struct CpuTicks {
    quint64 busy = 0;
    quint64 total = 0;
};

struct MemoryUse {
    quint64 used = 0;   // bytes in use by programs, caches that can be dropped left out
    quint64 total = 0;  // physical memory in bytes
};

// One process at one instant.
struct ProcessRecord {
    qint64 ppid = 0;
    QString path;     // the executable, empty when it cannot be read
    QString name;     // the last component of the path, or the short name
    quint64 cpuTime = 0;  // user + system time so far, nanoseconds
    quint64 memory = 0;   // resident bytes
    // The unit the session's launcher started the process in (on Linux the systemd
    // "app-…" scope of the desktop entry it came from); empty when there is none.
    QString launchUnit;
};

// The machine's processors, memory and processes. Every call may run on a worker thread
// and fails quietly.
class ProcessTable {
public:
    virtual ~ProcessTable() = default;
    virtual std::optional<CpuTicks> cpuTicks() = 0;
    virtual std::optional<MemoryUse> memory() = 0;
    // 1 normal, 2 warning, 4 critical; nothing when the system does not tell.
    virtual std::optional<int> memoryPressure() = 0;
    virtual QList<qint64> allPids() = 0;
    virtual std::optional<ProcessRecord> read(qint64 pid) = 0;
    // The process the system holds responsible for this one, where it keeps such a thing.
    virtual std::optional<qint64> responsiblePid(qint64) { return std::nullopt; }
    // A clock that never goes back, in nanoseconds.
    virtual quint64 monotonicNanoseconds() = 0;
    // Asks a process to end (force: ends it at once); false when it cannot be signalled.
    virtual bool terminate(qint64 pid, bool force) = 0;
};

}  // namespace orlo
