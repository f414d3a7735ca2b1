#pragma once
#include "platform/ProcessTable.h"

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
    bool terminate(qint64 pid, bool force) override;

private:
    unsigned int host_;  // mach_port_t
    quint64 numerator_ = 1;
    quint64 denominator_ = 1;
};

}  // namespace orlo::mac
