#pragma once
#include "platform/ProcessTable.h"

struct proc_bsdinfo;

namespace orlo::mac {

// Processors and memory from the Mach host statistics, processes from libproc. Safe on a
// worker thread: no AppKit, no shared state but the host port and the time base.
class MacProcessTable : public ProcessTable {
public:
    MacProcessTable();
    ~MacProcessTable() override;

    std::optional<CpuTicks> cpuTicks() override;
    std::optional<MemoryUse> memory() override;
    std::optional<int> memoryPressure() override;
    QList<qint64> allPids() override;
    std::optional<ProcessRecord> read(qint64 pid) override;
    std::optional<qint64> responsiblePid(qint64 pid) override;
    quint64 monotonicNanoseconds() override;
    SignalResult terminate(qint64 pid, quint64 startTime, bool force) override;
    bool isRunning(qint64 pid, quint64 startTime) override;

private:
    // When the process started, in microseconds since the epoch: with the pid, its name.
    static quint64 startTimeOf(const proc_bsdinfo& bsd);

    unsigned int host_;  // mach_port_t
    quint64 numerator_ = 1;
    quint64 denominator_ = 1;
};

}  // namespace orlo::mac
