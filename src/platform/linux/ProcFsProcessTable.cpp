#include "platform/linux/ProcFsProcessTable.h"
#include "platform/linux/SandboxedApp.h"
#include <QFileInfo>
#include <QSet>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orlo {

ProcFsProcessTable::ProcFsProcessTable(const QString& procRoot)
    : user_(getuid()),
      ticksPerSecond_(quint64(std::max(1L, sysconf(_SC_CLK_TCK)))),
      pageSize_(quint64(std::max(1L, sysconf(_SC_PAGESIZE))))
{
    rootFd_ = ::open(procRoot.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // CPU clocks are the running system's: a /proc folder of another making (tests) has its
    // stat lines read at every look instead.
    struct stat given{}, system{};
    liveClocks_ = rootFd_ >= 0 && ::fstat(rootFd_, &given) == 0 && ::stat("/proc", &system) == 0
                  && given.st_dev == system.st_dev && given.st_ino == system.st_ino;
}

ProcFsProcessTable::~ProcFsProcessTable()
{
    if (rootFd_ >= 0) ::close(rootFd_);
}

// A whole small file below /proc in one read; empty when it cannot be read.
QByteArray ProcFsProcessTable::readSmall(const char* relativePath) const
{
    if (rootFd_ < 0) return {};
    const int fd = ::openat(rootFd_, relativePath, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    char buffer[4096];
    QByteArray text;
    ssize_t got;
    while ((got = ::read(fd, buffer, sizeof buffer)) > 0) text.append(buffer, got);
    ::close(fd);
    return text;
}

static QList<quint64> numbersAfter(const QByteArray& line, qsizetype from)
{
    QList<quint64> numbers;
    for (const QByteArray& word : line.mid(from).simplified().split(' ')) numbers << word.toULongLong();
    return numbers;
}

std::optional<CpuTicks> ProcFsProcessTable::cpuTicks() { return cpuTicks(readSmall("stat")); }

std::optional<CpuTicks> ProcFsProcessTable::cpuTicks(const QByteArray& stat)
{
    if (!stat.startsWith("cpu ")) return std::nullopt;
    // user nice system idle iowait irq softirq steal (guest time is already in user)
    const QList<quint64> t = numbersAfter(stat.left(stat.indexOf('\n')), 4);
    if (t.size() < 4) return std::nullopt;
    const quint64 busy = t[0] + t[1] + t[2] + t.value(5) + t.value(6) + t.value(7);
    // One "cpuN" line follows for each processor.
    int processors = 0;
    for (qsizetype at = stat.indexOf("\ncpu"); at >= 0 && at + 4 < stat.size(); at = stat.indexOf("\ncpu", at + 4))
        if (stat[at + 4] >= '0' && stat[at + 4] <= '9') ++processors;
    return CpuTicks{busy, busy + t[3] + t.value(4), std::max(1, processors)};
}

std::optional<MemoryUse> ProcFsProcessTable::memory() { return memory(readSmall("meminfo")); }

std::optional<MemoryUse> ProcFsProcessTable::memory(const QByteArray& info)
{
    quint64 total = 0, available = 0;
    bool hasAvailable = false;
    for (const QByteArray& line : info.split('\n')) {
        if (line.startsWith("MemTotal:")) total = numbersAfter(line, 9).value(0) * 1024;
        else if (line.startsWith("MemAvailable:")) {
            available = numbersAfter(line, 13).value(0) * 1024;
            hasAvailable = true;
        }
    }
    if (!total) return std::nullopt;
    return MemoryUse{hasAvailable && available <= total ? total - available : 0, total};
}

std::optional<int> ProcFsProcessTable::pressureLevel(const QByteArray& text)
{
    auto avg10 = [&](const char* kind) -> std::optional<double> {
        for (const QByteArray& line : text.split('\n')) {
            if (!line.startsWith(kind)) continue;
            const qsizetype at = line.indexOf("avg10=");
            if (at < 0) return std::nullopt;
            bool ok = false;
            const double value = line.mid(at + 6, line.indexOf(' ', at) - at - 6).toDouble(&ok);
            if (ok) return value;
        }
        return std::nullopt;
    };
    const auto some = avg10("some"), full = avg10("full");
    if (!some) return std::nullopt;
    // Programs stalled on memory for a tenth of the time is a warning; everyone stalled, or
    // someone most of the time, is critical.
    if (full.value_or(0) >= 10 || *some >= 40) return 4;
    if (*some >= 10) return 2;
    return 1;
}

std::optional<int> ProcFsProcessTable::memoryPressure() { return pressureLevel(readSmall("pressure/memory")); }

QList<qint64> ProcFsProcessTable::allPids()
{
    QList<qint64> pids;
    if (rootFd_ < 0) return pids;
    const int fd = ::dup(rootFd_);
    DIR* dir = fd >= 0 ? ::fdopendir(fd) : nullptr;
    if (!dir) {
        if (fd >= 0) ::close(fd);
        return pids;
    }
    ::rewinddir(dir);
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (end && *end == '\0') pids << pid;
    }
    ::closedir(dir);
    // Forget what ended.
    if (known_.size() > pids.size()) {
        const QSet<qint64> alive(pids.cbegin(), pids.cend());
        known_.removeIf([&alive](const auto& entry) { return !alive.contains(entry.key()); });
    }
    return pids;
}

QString ProcFsProcessTable::launchUnit(const QByteArray& cgroup)
{
    // "0::/user.slice/user-1000.slice/user@1000.service/app.slice/app-gnome-firefox-2314.scope"
    for (const QByteArray& line : cgroup.split('\n')) {
        if (!line.startsWith("0::")) continue;
        const QList<QByteArray> parts = line.mid(3).split('/');
        for (auto it = parts.crbegin(); it != parts.crend(); ++it)
            if (it->startsWith("app-")) return QString::fromUtf8(*it);
    }
    return {};
}

std::optional<ProcFsProcessTable::Owner> ProcFsProcessTable::owner(const QByteArray& status)
{
    // "Uid:\t1000\t1000\t1000\t1000": real, effective, saved and file-system user ids.
    const qsizetype at = status.startsWith("Uid:") ? 0 : status.indexOf("\nUid:");
    if (at < 0) return std::nullopt;
    const qsizetype from = at + (at == 0 ? 4 : 5);
    const QList<QByteArray> ids = status.mid(from, status.indexOf('\n', from) - from).simplified().split(' ');
    if (ids.size() != 4) return std::nullopt;
    bool realOk = false, savedOk = false;
    const Owner owner{uid_t(ids[0].toUInt(&realOk)), uid_t(ids[2].toUInt(&savedOk))};
    if (!realOk || !savedOk) return std::nullopt;
    return owner;
}

std::optional<ProcFsProcessTable::Stat> ProcFsProcessTable::stat(const char* text, qsizetype length)
{
    // "pid (comm) state ppid ..." where comm may itself hold spaces and parentheses.
    const char* open = std::strchr(text, '(');
    const char* close = std::strrchr(text, ')');
    if (!open || !close || close < open || close + 2 >= text + length) return std::nullopt;
    // The fields after the name, counted from 0: state 0, ppid 1, utime 11, stime 12,
    // starttime 19, rss 21.
    quint64 field[22] = {};
    const char* at = close + 2;
    for (int i = 0; i < 22 && *at; ++i) {
        field[i] = i == 0 ? 0 : std::strtoull(at, nullptr, 10);
        at = std::strchr(at, ' ');
        if (!at) {
            if (i < 21) return std::nullopt;
            break;
        }
        ++at;
    }
    Stat fields;
    fields.comm = QByteArrayView(open + 1, close - open - 1);
    fields.state = close[2];
    fields.ppid = qint64(field[1]);
    fields.cpuTicks = field[11] + field[12];
    fields.startTime = field[19];
    fields.residentPages = field[21];
    return fields;
}

// Uses nothing but the /proc folder, so it may run on any thread.
std::optional<ProcFsProcessTable::Stat> ProcFsProcessTable::readStat(qint64 pid, char (&text)[1024]) const
{
    if (rootFd_ < 0 || pid < 1) return std::nullopt;
    char path[48];
    std::snprintf(path, sizeof path, "%lld/stat", static_cast<long long>(pid));
    const int fd = ::openat(rootFd_, path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    const ssize_t length = ::read(fd, text, sizeof text - 1);
    ::close(fd);
    if (length <= 0) return std::nullopt;
    text[length] = '\0';
    return stat(text, length);
}

// The process's CPU time so far in nanoseconds, from its CPU clock; nothing once it has ended.
static std::optional<quint64> cpuClock(clockid_t clock)
{
    timespec time{};
    if (clock == 0 || clock_gettime(clock, &time) != 0) return std::nullopt;
    return quint64(time.tv_sec) * 1'000'000'000ULL + quint64(time.tv_nsec);
}

static bool isKernelThread(qint64 pid, qint64 ppid) { return pid == 2 || ppid == 2; }

// What stays the same for the process's life: its executable, launch unit, owner and clock.
ProcFsProcessTable::Known ProcFsProcessTable::learn(qint64 pid, const Stat& fields) const
{
    Known k;
    k.startTime = fields.startTime;
    k.comm = fields.comm.toByteArray();
    k.record.startTime = fields.startTime;
    k.record.name = QString::fromUtf8(k.comm);
    if (!liveClocks_ || clock_getcpuclockid(pid_t(pid), &k.clock) != 0) k.clock = 0;
    k.kernelThread = isKernelThread(pid, fields.ppid);
    if (k.kernelThread) return k;
    char path[48];
    std::snprintf(path, sizeof path, "%lld/exe", static_cast<long long>(pid));
    char target[4096];
    const ssize_t n = ::readlinkat(rootFd_, path, target, sizeof target - 1);
    if (n > 0) {
        k.record.path = QString::fromUtf8(target, n).remove(QLatin1String(" (deleted)"));
        k.record.name = QFileInfo(k.record.path).fileName();
    }
    std::snprintf(path, sizeof path, "%lld/cgroup", static_cast<long long>(pid));
    const QByteArray cgroup = readSmall(path);
    k.record.launchUnit = launchUnit(cgroup);
    k.record.sandboxedApp = sandboxedAppId(cgroup);
    std::snprintf(path, sizeof path, "%lld/status", static_cast<long long>(pid));
    const auto owner = ProcFsProcessTable::owner(readSmall(path));
    // The system lets a user signal the processes whose real or saved id is theirs.
    k.record.ownedByUser = owner && (owner->real == user_ || owner->saved == user_);
    return k;
}

std::optional<ProcessRecord> ProcFsProcessTable::readAll(qint64 pid)
{
    char text[1024];
    const auto fields = readStat(pid, text);
    if (!fields) {
        known_.remove(pid);
        return std::nullopt;
    }
    auto it = known_.find(pid);
    const bool fresh = it == known_.end() || it->startTime != fields->startTime || it->comm != fields->comm;
    if (fresh) it = known_.insert(pid, learn(pid, *fields));
    // New processes spread their periodic full reads over the following looks.
    it->looksSinceRead = fresh ? int(pid % RefreshEvery) : 0;
    // The clock counts in nanoseconds what the stat line counts in ticks of 10 ms.
    const auto clock = cpuClock(it->clock);
    it->cpuTime = clock.value_or(0);
    if (it->kernelThread) return std::nullopt;
    ProcessRecord& record = it->record;
    record.ppid = fields->ppid;
    record.memory = fields->residentPages * pageSize_;
    record.cpuTime = clock ? *clock : fields->cpuTicks * (1'000'000'000ULL / ticksPerSecond_);
    return record;
}

std::optional<ProcessRecord> ProcFsProcessTable::read(qint64 pid)
{
    const auto it = known_.find(pid);
    // A process that has not run since the last look is as it was, but for memory taken from
    // it while asleep: that shows at the next full read.
    if (it != known_.end() && it->clock != 0 && ++it->looksSinceRead < RefreshEvery) {
        const auto ran = cpuClock(it->clock);
        if (!ran) {  // ended
            known_.erase(it);
            return std::nullopt;
        }
        if (*ran == it->cpuTime) return it->kernelThread ? std::nullopt : std::optional(it->record);
    }
    return readAll(pid);
}

quint64 ProcFsProcessTable::monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return quint64(now.tv_sec) * 1'000'000'000ULL + quint64(now.tv_nsec);
}

bool ProcFsProcessTable::isRunning(qint64 pid, quint64 startTime)
{
    char text[1024];
    const auto fields = readStat(pid, text);
    return fields && fields->startTime == startTime && fields->state != 'Z' && fields->state != 'X';
}

SignalResult ProcFsProcessTable::terminate(qint64 pid, quint64 startTime, bool force)
{
    if (pid < 2) return SignalResult::NotPermitted;
    // The descriptor holds on to whichever process has the pid now; if that one started when
    // the sampled one did, it is the sampled one, and a signal through the descriptor can
    // only ever reach it.
    const int handle = int(::syscall(SYS_pidfd_open, pid_t(pid), 0));
    if (handle < 0 && errno != ENOSYS) return SignalResult::Ended;
    if (!isRunning(pid, startTime)) {
        if (handle >= 0) ::close(handle);
        return SignalResult::Ended;
    }
    const int signal = force ? SIGKILL : SIGTERM;
    const int sent = handle >= 0 ? int(::syscall(SYS_pidfd_send_signal, handle, signal, nullptr, 0)) : ::kill(pid_t(pid), signal);
    const int error = errno;
    if (handle >= 0) ::close(handle);
    if (sent == 0) return SignalResult::Sent;
    return error == EPERM ? SignalResult::NotPermitted : SignalResult::Ended;
}

}  // namespace orlo
