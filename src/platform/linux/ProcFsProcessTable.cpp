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
#include <unistd.h>

namespace orlo {

ProcFsProcessTable::ProcFsProcessTable(const QString& procRoot)
    : ticksPerSecond_(quint64(std::max(1L, sysconf(_SC_CLK_TCK)))),
      pageSize_(quint64(std::max(1L, sysconf(_SC_PAGESIZE))))
{
    rootFd_ = ::open(procRoot.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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

std::optional<CpuTicks> ProcFsProcessTable::cpuTicks()
{
    const QByteArray stat = readSmall("stat");
    if (!stat.startsWith("cpu ")) return std::nullopt;
    // user nice system idle iowait irq softirq steal (guest time is already in user)
    const QList<quint64> t = numbersAfter(stat.left(stat.indexOf('\n')), 4);
    if (t.size() < 4) return std::nullopt;
    const quint64 busy = t[0] + t[1] + t[2] + t.value(5) + t.value(6) + t.value(7);
    return CpuTicks{busy, busy + t[3] + t.value(4)};
}

std::optional<MemoryUse> ProcFsProcessTable::memory()
{
    const QByteArray info = readSmall("meminfo");
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
    if (known_.size() > pids.size() + 256) {
        const QSet<qint64> alive(pids.cbegin(), pids.cend());
        known_.removeIf([&alive](const auto& it) { return !alive.contains(it.key()); });
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

std::optional<ProcessRecord> ProcFsProcessTable::read(qint64 pid)
{
    if (rootFd_ < 0) return std::nullopt;
    char path[48];
    std::snprintf(path, sizeof path, "%lld/stat", static_cast<long long>(pid));
    char stat[1024];
    const ssize_t length = readInto(rootFd_, path, stat, sizeof stat);
    if (length <= 0) return std::nullopt;
    // "pid (comm) state ppid ..." where comm may itself hold spaces and parentheses.
    const char* open = std::strchr(stat, '(');
    const char* close = std::strrchr(stat, ')');
    if (!open || !close || close < open || close + 2 >= stat + length) return std::nullopt;
    // The fields after the name, counted from 0: ppid 1, utime 11, stime 12, starttime 19, rss 21.
    quint64 field[22] = {};
    const char* at = close + 2;
    for (int i = 0; i < 22 && *at; ++i) {
        char* next = nullptr;
        field[i] = i == 0 ? 0 : std::strtoull(at, &next, 10);
        at = std::strchr(at, ' ');
        if (!at) {
            if (i < 21) return std::nullopt;
            break;
        }
        ++at;
    }
    const qint64 ppid = qint64(field[1]);
    if (pid == 2 || ppid == 2) return std::nullopt;  // kernel threads

    ProcessRecord record;
    record.ppid = ppid;
    record.cpuTime = (field[11] + field[12]) * (1'000'000'000ULL / ticksPerSecond_);
    record.memory = field[21] * pageSize_;
    const quint64 startTime = field[19];
    const QByteArray comm(open + 1, close - open - 1);

    auto it = known_.find(pid);
    if (it == known_.end() || it->startTime != startTime || it->comm != comm) {
        Known k{startTime, comm, {}, QString::fromUtf8(comm), {}};
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
    return record;
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
