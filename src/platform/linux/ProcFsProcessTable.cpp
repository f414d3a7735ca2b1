#include "platform/linux/ProcFsProcessTable.h"
#include <QFileInfo>
#include <QSet>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace orlo {

ProcFsProcessTable::ProcFsProcessTable(const QString& procRoot)
    : ticksPerSecond_(quint64(std::max(1L, sysconf(_SC_CLK_TCK)))),
      pageSize_(quint64(std::max(1L, sysconf(_SC_PAGESIZE))))
{
    rootFd_ = ::open(procRoot.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // One open file per sleeping process: raise the soft limit where the hard one allows,
    // and leave plenty for everything else.
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        const rlim_t wanted = std::min<rlim_t>(files.rlim_max, 65536);
        if (files.rlim_cur < wanted) {
            files.rlim_cur = wanted;
            setrlimit(RLIMIT_NOFILE, &files);
            getrlimit(RLIMIT_NOFILE, &files);
        }
        fileBudget_ = int(std::min<rlim_t>(files.rlim_cur, 65536)) / 2 - 512;
    }
}

ProcFsProcessTable::~ProcFsProcessTable()
{
    for (const Known& k : std::as_const(known_))
        if (k.schedstat >= 0) ::close(k.schedstat);
    if (rootFd_ >= 0) ::close(rootFd_);
}

void ProcFsProcessTable::forget(qint64 pid)
{
    const auto it = known_.constFind(pid);
    if (it == known_.constEnd()) return;
    if (it->schedstat >= 0) {
        ::close(it->schedstat);
        --openFiles_;
    }
    known_.erase(it);
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
    return CpuTicks{busy, busy + t[3] + t.value(4)};
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
    // Forget what ended, and close what was kept open for it.
    if (known_.size() > pids.size()) {
        const QSet<qint64> alive(pids.cbegin(), pids.cend());
        QList<qint64> ended;
        for (auto it = known_.cbegin(); it != known_.cend(); ++it)
            if (!alive.contains(it.key())) ended << it.key();
        for (qint64 pid : std::as_const(ended)) forget(pid);
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

// Reads a small file below /proc into a buffer without allocating; its length, or -1.
static ssize_t readInto(int rootFd, const char* relativePath, char* buffer, size_t size)
{
    const int fd = ::openat(rootFd, relativePath, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1;
    const ssize_t got = ::read(fd, buffer, size - 1);
    ::close(fd);
    if (got >= 0) buffer[got] = '\0';
    return got;
}

quint64 ProcFsProcessTable::runTime(const char* schedstat) { return std::strtoull(schedstat, nullptr, 10); }

// The time the process's only thread has run, in nanoseconds; 0 when it cannot be read.
static quint64 runTimeOf(int schedstat)
{
    char text[128];
    const ssize_t n = schedstat >= 0 ? ::pread(schedstat, text, sizeof text - 1, 0) : -1;
    if (n <= 0) return 0;
    text[n] = '\0';
    return ProcFsProcessTable::runTime(text);
}

std::optional<ProcFsProcessTable::Stat> ProcFsProcessTable::stat(const char* text, qsizetype length)
{
    // "pid (comm) state ppid ..." where comm may itself hold spaces and parentheses.
    const char* open = std::strchr(text, '(');
    const char* close = std::strrchr(text, ')');
    if (!open || !close || close < open || close + 2 >= text + length) return std::nullopt;
    // The fields after the name, counted from 0: ppid 1, utime 11, stime 12, threads 17,
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
    fields.ppid = qint64(field[1]);
    fields.cpuTicks = field[11] + field[12];
    fields.threads = int(field[17]);
    fields.startTime = field[19];
    fields.residentPages = field[21];
    return fields;
}

std::optional<ProcessRecord> ProcFsProcessTable::readStat(qint64 pid)
{
    if (rootFd_ < 0) return std::nullopt;
    // Before stat: time it runs between the two reads then shows as a change next time.
    const auto knownBefore = known_.constFind(pid);
    quint64 runTimeBefore = knownBefore != known_.constEnd() ? runTimeOf(knownBefore->schedstat) : 0;
    char path[48];
    std::snprintf(path, sizeof path, "%lld/stat", static_cast<long long>(pid));
    char text[1024];
    const ssize_t length = readInto(rootFd_, path, text, sizeof text);
    if (length <= 0) return std::nullopt;
    const auto fields = stat(text, length);
    if (!fields) return std::nullopt;
    if (pid == 2 || fields->ppid == 2) return std::nullopt;  // kernel threads

    ProcessRecord record;
    record.ppid = fields->ppid;
    record.cpuTime = fields->cpuTicks * (1'000'000'000ULL / ticksPerSecond_);
    record.memory = fields->residentPages * pageSize_;
    const quint64 startTime = fields->startTime;
    const QByteArray comm = fields->comm.toByteArray();

    auto it = known_.find(pid);
    const bool fresh = it == known_.end() || it->startTime != startTime || it->comm != comm;
    if (fresh) {
        forget(pid);
        Known k;
        k.startTime = startTime;
        k.comm = comm;
        k.name = QString::fromUtf8(comm);
        std::snprintf(path, sizeof path, "%lld/exe", static_cast<long long>(pid));
        char target[4096];
        const ssize_t n = ::readlinkat(rootFd_, path, target, sizeof target - 1);
        if (n > 0) {
            k.path = QString::fromUtf8(target, n).remove(QLatin1String(" (deleted)"));
            k.name = QFileInfo(k.path).fileName();
        }
        std::snprintf(path, sizeof path, "%lld/cgroup", static_cast<long long>(pid));
        k.unit = launchUnit(readSmall(path));
        it = known_.insert(pid, k);
    }
    record.path = it->path;
    record.name = it->name;
    record.launchUnit = it->unit;
    it->record = record;
    it->threads = fields->threads;
    // New processes spread their periodic full reads over the following looks.
    it->looksSinceRead = fresh ? int(pid % RefreshEvery) : 0;
    if (it->threads == 1 && it->schedstat < 0 && openFiles_ < fileBudget_) {
        std::snprintf(path, sizeof path, "%lld/schedstat", static_cast<long long>(pid));
        it->schedstat = ::openat(rootFd_, path, O_RDONLY | O_CLOEXEC);
        if (it->schedstat >= 0) ++openFiles_;
        runTimeBefore = runTimeOf(it->schedstat);
    }
    it->runTime = runTimeBefore;
    return record;
}

std::optional<ProcessRecord> ProcFsProcessTable::read(qint64 pid)
{
    const auto it = known_.find(pid);
    // A sleeping single-threaded process: the same as last time unless it ran.
    if (it != known_.end() && it->schedstat >= 0 && it->threads == 1 && it->looksSinceRead + 1 < RefreshEvery) {
        const quint64 ran = runTimeOf(it->schedstat);
        if (ran == 0) {  // it ended; the pid may already be another process's
            forget(pid);
            return readStat(pid);
        }
        if (ran == it->runTime) {
            ++it->looksSinceRead;
            return it->record;
        }
    }
    return readStat(pid);
}

quint64 ProcFsProcessTable::monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return quint64(now.tv_sec) * 1'000'000'000ULL + quint64(now.tv_nsec);
}

bool ProcFsProcessTable::terminate(qint64 pid, bool force)
{
    if (pid < 2) return false;
    return ::kill(pid_t(pid), force ? SIGKILL : SIGTERM) == 0;
}

}  // namespace orlo
