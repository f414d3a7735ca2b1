#include "platform/mac/MacProcessTable.h"
#import <AppKit/AppKit.h>
#include <QFileInfo>
#include <algorithm>
#include <cstring>
#include <cerrno>
#include <dlfcn.h>
#include <libproc.h>
#include <mach/mach.h>
#include <signal.h>
#include <sys/proc.h>
#include <sys/sysctl.h>
#include <time.h>
#include <unistd.h>
#include <vector>

// No Core Foundation object is created here. Mach memory that host_processor_info hands out
// is given back with vm_deallocate, the host port with mach_port_deallocate.
namespace orlo::mac {

MacProcessTable::MacProcessTable() : host_(mach_host_self())
{
    mach_timebase_info_data_t timebase{};
    if (mach_timebase_info(&timebase) == KERN_SUCCESS) {
        numerator_ = std::max<quint64>(timebase.numer, 1);
        denominator_ = std::max<quint64>(timebase.denom, 1);
    }
}

MacProcessTable::~MacProcessTable() { mach_port_deallocate(mach_task_self(), host_); }

std::optional<CpuTicks> MacProcessTable::cpuTicks()
{
    natural_t processors = 0;
    processor_info_array_t info = nullptr;
    mach_msg_type_number_t infoCount = 0;
    if (host_processor_info(host_, PROCESSOR_CPU_LOAD_INFO, &processors, &info, &infoCount) != KERN_SUCCESS) return std::nullopt;
    CpuTicks ticks;
    ticks.processors = int(processors);
    const auto* load = reinterpret_cast<const processor_cpu_load_info_data_t*>(info);
    for (natural_t i = 0; i < processors; ++i) {
        const quint64 busy = quint64(load[i].cpu_ticks[CPU_STATE_USER]) + load[i].cpu_ticks[CPU_STATE_SYSTEM] + load[i].cpu_ticks[CPU_STATE_NICE];
        ticks.busy += busy;
        ticks.total += busy + load[i].cpu_ticks[CPU_STATE_IDLE];
    }
    vm_deallocate(mach_task_self(), vm_address_t(info), vm_size_t(infoCount) * sizeof(integer_t));
    return ticks;
}

std::optional<MemoryUse> MacProcessTable::memory()
{
    vm_statistics64_data_t stats{};
    mach_msg_type_number_t count = HOST_VM_INFO64_COUNT;
    if (host_statistics64(host_, HOST_VM_INFO64, reinterpret_cast<host_info64_t>(&stats), &count) != KERN_SUCCESS)
        return std::nullopt;
    // What the Activity Monitor calls memory used: app memory (anonymous pages that cannot
    // be purged), wired memory and what the compressor holds.
    const quint64 internal = stats.internal_page_count;
    const quint64 pages = internal - std::min<quint64>(stats.purgeable_count, internal) + stats.wire_count + stats.compressor_page_count;
    return MemoryUse{pages * quint64(getpagesize()), quint64([NSProcessInfo processInfo].physicalMemory)};
}

std::optional<int> MacProcessTable::memoryPressure()
{
    int level = 0;
    size_t size = sizeof level;
    if (sysctlbyname("kern.memorystatus_vm_pressure_level", &level, &size, nullptr, 0) != 0) return std::nullopt;
    return level;
}

QList<qint64> MacProcessTable::allPids()
{
    const int estimate = proc_listallpids(nullptr, 0);
    if (estimate <= 0) return {};
    // Room for processes started between the two calls.
    std::vector<pid_t> pids(size_t(estimate) + 64);
    const int count = proc_listallpids(pids.data(), int(pids.size() * sizeof(pid_t)));
    QList<qint64> out;
    for (int i = 0; i < std::min(count, int(pids.size())); ++i)
        if (pids[size_t(i)] > 0) out << pids[size_t(i)];
    return out;
}

std::optional<ProcessRecord> MacProcessTable::read(qint64 pid)
{
    proc_bsdinfo bsd{};
    if (proc_pidinfo(int(pid), PROC_PIDTBSDINFO, 0, &bsd, sizeof bsd) != int(sizeof bsd)) return std::nullopt;
    proc_taskinfo task{};
    if (proc_pidinfo(int(pid), PROC_PIDTASKINFO, 0, &task, sizeof task) != int(sizeof task)) return std::nullopt;
    ProcessRecord record;
    record.ppid = bsd.pbi_ppid;
    record.startTime = startTimeOf(bsd);
    record.ownedByUser = bsd.pbi_ruid == getuid() || bsd.pbi_svuid == getuid();
    char path[PROC_PIDPATHINFO_MAXSIZE] = {};
    if (proc_pidpath(int(pid), path, sizeof path) > 0) record.path = QString::fromUtf8(path);
    if (!record.path.isEmpty())
        record.name = QFileInfo(record.path).fileName();
    else if (bsd.pbi_name[0])
        record.name = QString::fromUtf8(bsd.pbi_name, qsizetype(strnlen(bsd.pbi_name, sizeof bsd.pbi_name)));
    else
        record.name = QString::fromUtf8(bsd.pbi_comm, qsizetype(strnlen(bsd.pbi_comm, sizeof bsd.pbi_comm)));
    // The task's times are in Mach absolute time units.
    record.cpuTime = (quint64(task.pti_total_user) + task.pti_total_system) * numerator_ / denominator_;
    record.memory = task.pti_resident_size;
    return record;
}

std::optional<qint64> MacProcessTable::responsiblePid(qint64 pid)
{
    // PRIVATE API, the only way there is: the system's record of which application a helper
    // or an XPC service works for (it launched it on the application's behalf) has no
    // documented call. Looked up by name at run time and skipped when absent.
    using Responsible = pid_t (*)(pid_t);
    static const auto responsible = reinterpret_cast<Responsible>(dlsym(RTLD_DEFAULT, "responsibility_get_pid_responsible_for_pid"));
    if (!responsible) return std::nullopt;
    const pid_t answer = responsible(pid_t(pid));
    if (answer <= 0) return std::nullopt;
    return answer;
}

quint64 MacProcessTable::monotonicNanoseconds() { return clock_gettime_nsec_np(CLOCK_UPTIME_RAW); }

quint64 MacProcessTable::startTimeOf(const proc_bsdinfo& bsd)
{
    return quint64(bsd.pbi_start_tvsec) * 1000000 + quint64(bsd.pbi_start_tvusec);
}

bool MacProcessTable::isRunning(qint64 pid, quint64 startTime)
{
    proc_bsdinfo bsd{};
    if (proc_pidinfo(int(pid), PROC_PIDTBSDINFO, 0, &bsd, sizeof bsd) != int(sizeof bsd)) return false;
    return startTimeOf(bsd) == startTime && bsd.pbi_status != SZOMB;
}

SignalResult MacProcessTable::terminate(qint64 pid, quint64 startTime, bool force)
{
    // There is no process descriptor to signal through here: the start time is checked just
    // before, which leaves only the moment between the two for the pid to be taken again.
    if (!isRunning(pid, startTime)) return SignalResult::Ended;
    // An application ends the way its Quit command ends it; any other process by a signal.
    if (NSRunningApplication* app = [NSRunningApplication runningApplicationWithProcessIdentifier:pid_t(pid)])
        return (force ? [app forceTerminate] : [app terminate]) ? SignalResult::Sent : SignalResult::NotPermitted;
    if (::kill(pid_t(pid), force ? SIGKILL : SIGTERM) == 0) return SignalResult::Sent;
    return errno == ESRCH ? SignalResult::Ended : SignalResult::NotPermitted;
}

}  // namespace orlo::mac
