#pragma once
#include <QList>
#include <QString>
#include <optional>

namespace orlo {

// Busy (user + system + nice) and total CPU ticks of all processors since boot.
struct CpuTicks {
    quint64 busy = 0;
    quint64 total = 0;
    int processors = 1;  // how many processors the ticks are summed over
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
    // The desktop-file id of the sandboxed application (Flatpak, snap) the process runs in,
    // "org.gnome.Calculator" for "app-flatpak-org.gnome.Calculator-4711.scope"; empty
    // outside any sandbox.
    QString sandboxedApp{};
    // When the process started, in the system's own units: with the pid it names one process,
    // so a pid used again by a later process is never taken for the first.
    quint64 startTime = 0;
    // Runs as the user running Orlo; other users' and the system's processes are not Orlo's
    // to quit.
    bool ownedByUser = true;
};

// What became of a request to end a process.
enum class SignalResult {
    Sent,
    Ended,         // the process had already ended (its pid may be another process's now)
    NotPermitted,  // the system refused
};

// The machine's processors, memory and processes. Every call may run on a worker thread
// and fails quietly. terminate() and isRunning() may run on another thread than the rest.
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
    // Asks the process that pid and start time name to end (force: ends it at once). A pid
    // that another process has taken since is never signalled.
    virtual SignalResult terminate(qint64 pid, quint64 startTime, bool force) = 0;
    // Whether that process still runs (one that has ended but not been collected does not).
    virtual bool isRunning(qint64 pid, quint64 startTime) = 0;
};

}  // namespace orlo
