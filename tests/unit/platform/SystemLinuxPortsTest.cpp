#include "WriteFile.h"
#include "platform/linux/GammaRecoveryFile.h"
#include "platform/linux/ProcFsProcessTable.h"
#include "platform/linux/XdgUserFiles.h"
#include "platform/x11/Edid.h"
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#include <gtest/gtest.h>

using namespace orlo;


TEST(Edid, KeyAndMonitorNameFromTheBaseBlock)
{
    QByteArray edid(128, '\0');
    const unsigned char header[8] = {0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    memcpy(edid.data(), header, 8);
    edid[8] = char(0x10);  // "DEL"
    edid[9] = char(0xAC);
    edid[10] = char(0x34);
    edid[11] = char(0x12);
    edid[12] = char(0x78);
    edid[13] = char(0x56);
    edid[14] = char(0x34);
    edid[15] = char(0x12);
    const int name = 72;  // the second descriptor
    edid[name + 3] = char(0xFC);
    memcpy(edid.data() + name + 5, "DELL U2720Q\n ", 13);
    const auto parsed = x11::Edid::parse(edid);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->key(), "4268-4660-305419896");
    EXPECT_EQ(parsed->monitorName, "DELL U2720Q");
    EXPECT_FALSE(x11::Edid::parse(QByteArray(128, '\x01')));
    EXPECT_FALSE(x11::Edid::parse(edid.left(100)));
}

TEST(ProcFsProcessTable, ReadsProcessesProcessorsMemoryAndPressureFromProc)
{
    QTemporaryDir proc;
    writeFile(proc.filePath("stat"), "cpu  100 20 30 800 50 5 5 0 0 0\ncpu0 1 2 3 4\ncpu1 1 2 3 4\nintr 1 2\n");
    writeFile(proc.filePath("meminfo"), "MemTotal:       16000 kB\nMemFree:  1000 kB\nMemAvailable:   12000 kB\n");
    writeFile(proc.filePath("pressure/memory"), "some avg10=12.50 avg60=1.00 avg300=0.00 total=1\nfull avg10=0.00 avg60=0.00 avg300=0.00 total=0\n");
    const QByteArray tail = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
    writeFile(proc.filePath("42/stat"), "42 (my (odd) prog) S 7 42 42 0 -1 4194304 100 0 0 0 250 50 0 0 20 0 1 0 5555 1000000 300" + tail);
    writeFile(proc.filePath("42/cgroup"), "0::/user.slice/user-1000.slice/user@1000.service/app.slice/app-gnome-firefox-2314.scope\n");
    writeFile(proc.filePath("42/status"), QStringLiteral("Name:\tprog\nUid:\t%1\t%1\t%1\t%1\n").arg(getuid()).toLatin1());
    writeFile(proc.filePath("43/stat"), "43 (kworker/0:1) I 2 0 0 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 10 0 0" + tail);
    QDir().mkpath(proc.filePath("self"));

    ProcFsProcessTable table(proc.path());
    const CpuTicks ticks = *table.cpuTicks();
    EXPECT_EQ(ticks.busy, 160u);
    EXPECT_EQ(ticks.total, 1010u);
    EXPECT_EQ(ticks.processors, 2);
    EXPECT_EQ(table.memory()->used, 4000u * 1024);
    EXPECT_EQ(table.memory()->total, 16000u * 1024);
    EXPECT_EQ(table.memoryPressure(), 2);
    auto pids = table.allPids();
    std::sort(pids.begin(), pids.end());
    EXPECT_EQ(pids, (QList<qint64>{42, 43}));

    const auto record = table.read(42);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->ppid, 7);
    EXPECT_EQ(record->name, "my (odd) prog");
    EXPECT_EQ(record->cpuTime, 300ull * 1'000'000'000ull / sysconf(_SC_CLK_TCK));
    EXPECT_EQ(record->memory, 300ull * sysconf(_SC_PAGESIZE));
    EXPECT_EQ(record->launchUnit, "app-gnome-firefox-2314.scope");
    EXPECT_EQ(record->startTime, 5555u);
    EXPECT_TRUE(record->ownedByUser);
    EXPECT_FALSE(table.read(43));  // a kernel thread
    EXPECT_FALSE(table.read(44));  // gone
}

TEST(ProcFsProcessTable, APidTakenByAnotherProcessIsReadAfresh)
{
    QTemporaryDir proc;
    const QByteArray tail = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
    auto stat = [&](const char* name, int start, int rss) {
        writeFile(proc.filePath("30/stat"), QStringLiteral("30 (%1) S 1 30 30 0 -1 0 0 0 0 0 100 0 0 0 20 0 1 0 %2 0 %3")
                                                .arg(name).arg(start).arg(rss).toLatin1() + tail);
    };
    stat("first", 77, 10);
    writeFile(proc.filePath("30/cgroup"), "0::/user.slice/app-flatpak-org.example.First-1.scope\n");
    ProcFsProcessTable table(proc.path());
    const auto first = table.read(30);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->startTime, 77u);
    EXPECT_EQ(first->launchUnit, "app-flatpak-org.example.First-1.scope");
    EXPECT_EQ(first->sandboxedApp, "org.example.First");

    stat("first", 77, 20);
    writeFile(proc.filePath("30/cgroup"), "0::/user.slice/app-second-2.scope\n");
    EXPECT_EQ(table.read(30)->memory, 20ull * sysconf(_SC_PAGESIZE));
    EXPECT_EQ(table.read(30)->launchUnit, "app-flatpak-org.example.First-1.scope");  // kept for the process's life
    stat("second", 99, 20);
    EXPECT_EQ(table.read(30)->launchUnit, "app-second-2.scope");

    QDir(proc.filePath("30")).removeRecursively();  // it ended
    EXPECT_TRUE(table.allPids().isEmpty());
    EXPECT_FALSE(table.read(30));
}

TEST(ProcFsProcessTable, PressureLevelsLaunchUnitsAndOwners)
{
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=0.10 avg60=0 avg300=0 total=0\nfull avg10=0.00 avg60=0 avg300=0 total=0\n"), 1);
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=45.00 avg60=0 avg300=0 total=0\n"), 4);
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=5.00 avg60=0 avg300=0 total=0\nfull avg10=11.00 avg60=0 avg300=0 total=0\n"), 4);
    EXPECT_FALSE(ProcFsProcessTable::pressureLevel(""));
    EXPECT_EQ(ProcFsProcessTable::launchUnit("0::/user.slice/user-1000.slice/user@1000.service/app.slice/"
                                             "app-org.gnome.Terminal.slice/vte-spawn-1f.scope\n"),
              "app-org.gnome.Terminal.slice");
    EXPECT_EQ(ProcFsProcessTable::launchUnit("0::/user.slice/user-1000.slice/session-2.scope\n"), "");

    const auto owner = ProcFsProcessTable::owner("Name:\tbash\nUmask:\t0022\nUid:\t1000\t1001\t1002\t1003\nGid:\t100\t100\t100\t100\n");
    ASSERT_TRUE(owner);
    EXPECT_EQ(owner->real, 1000u);
    EXPECT_EQ(owner->saved, 1002u);
    for (const char* broken : {"", "Uid:\t1000\n", "Name:\tx\nUid:\tx\ty\tz\tw\n"})
        EXPECT_FALSE(ProcFsProcessTable::owner(broken)) << broken;
}

TEST(ProcFsProcessTable, StatLinesNamesAndTheirCutShortForms)
{
    const char line[] = "1234 (a) (b) Z 1 1234 1234 0 -1 4194560 1000 0 0 0 250 125 0 0 20 0 3 0 98765 123456789 2048 0\n";
    const auto stat = ProcFsProcessTable::stat(line, qsizetype(sizeof line - 1));
    ASSERT_TRUE(stat.has_value());
    EXPECT_EQ(stat->comm.toByteArray(), QByteArray("a) (b"));
    EXPECT_EQ(stat->state, 'Z');
    EXPECT_EQ(stat->ppid, 1);
    EXPECT_EQ(stat->cpuTicks, 375u);
    EXPECT_EQ(stat->startTime, 98765u);
    EXPECT_EQ(stat->residentPages, 2048u);
    for (const char* cut : {"1234 (a) S 1 1234", "1234 (a)", "1234 a) S (b", ""})
        EXPECT_FALSE(ProcFsProcessTable::stat(cut, qsizetype(strlen(cut)))) << cut;
}

// A child that only waits to be ended, returned once it runs as it should (as nobody when
// asked, which only root can do).
static pid_t startChild(bool asNobody)
{
    int ready[2];
    if (pipe(ready) != 0) return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        if (asNobody && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(1);
        (void)!write(ready[1], "r", 1);
        for (;;) pause();
    }
    char byte = 0;
    close(ready[1]);
    const bool started = pid > 0 && read(ready[0], &byte, 1) == 1;
    close(ready[0]);
    return started ? pid : -1;
}

TEST(ProcFsProcessTable, SeesThisProcessWithItsOwnCpuTimeAndTellsOthersProcessesApart)
{
    ProcFsProcessTable table;
    const auto self = table.read(getpid());
    ASSERT_TRUE(self);
    EXPECT_EQ(self->ppid, getppid());
    EXPECT_GT(self->memory, 0u);
    EXPECT_TRUE(self->ownedByUser);
    EXPECT_TRUE(table.allPids().contains(getpid()));
    EXPECT_GT(table.monotonicNanoseconds(), 0u);
    EXPECT_GE(table.cpuTicks()->processors, 1);

    // Run long enough for the CPU clock to move on.
    const quint64 before = self->cpuTime;
    while (table.read(getpid())->cpuTime == before) {}  // each read is work enough

    // As root the test makes a process of another user; otherwise init is one.
    const bool root = getuid() == 0;
    const pid_t other = root ? startChild(true) : 1;
    ASSERT_GT(other, 0);
    const auto foreign = table.read(other);
    ASSERT_TRUE(foreign);
    EXPECT_FALSE(foreign->ownedByUser);
    if (root) {
        kill(other, SIGKILL);
        waitpid(other, nullptr, 0);
    }
}

TEST(ProcFsProcessTable, EndsOnlyTheProcessThatWasSampledAndTellsWhenItHasEnded)
{
    ProcFsProcessTable table;
    const pid_t child = startChild(false);
    ASSERT_GT(child, 0);
    const auto record = table.read(child);
    ASSERT_TRUE(record);
    EXPECT_TRUE(table.isRunning(child, record->startTime));

    // Another start time: the pid would be a later process's, which is left alone.
    EXPECT_EQ(table.terminate(child, record->startTime + 1, true), SignalResult::Ended);
    EXPECT_FALSE(table.isRunning(child, record->startTime + 1));
    EXPECT_TRUE(table.isRunning(child, record->startTime));

    EXPECT_EQ(table.terminate(child, record->startTime, false), SignalResult::Sent);
    int status = 0;
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, id_t(child), &info, WEXITED | WNOWAIT), 0);  // ended, not yet collected
    EXPECT_FALSE(table.isRunning(child, record->startTime));
    EXPECT_EQ(table.terminate(child, record->startTime, true), SignalResult::Ended);
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
}

TEST(GammaRecoveryFile, KeepsTablesPerDisplayKeyForThisXDisplayOnly)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("state/Orlo/dimmed-displays.json");
    const GammaTables original{{0, 0.5f, 1}, {0, 0.5f, 1}, {0, 0.5f, 1}};
    const GammaTables applied{{0, 0.25f, 0.5f}, {0, 0.25f, 0.5f}, {0, 0.25f, 0.5f}};
    GammaRecoveryFile(path, ":3").save({{"7789-1-42", 63, original, applied}});
    EXPECT_EQ(QFileInfo(path).permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup), 0);

    const auto back = GammaRecoveryFile(path, ":3").load();
    ASSERT_EQ(back.size(), 1);
    const auto quantised = [](float v) { return float(quint16(v * 65535.0f + 0.5f)) / 65535.0f; };
    EXPECT_EQ(back[0].key, "7789-1-42");
    EXPECT_EQ(back[0].displayId, 63u);
    EXPECT_EQ(back[0].applied.red[1], quantised(0.25f));
    EXPECT_EQ(back[0].original.blue[2], 1.0f);
    EXPECT_TRUE(GammaRecoveryFile(path, ":4").load().isEmpty());
    GammaRecoveryFile(path, ":3").save({});
    EXPECT_FALSE(QFile::exists(path));
    writeFile(path, "{ not json");
    EXPECT_TRUE(GammaRecoveryFile(path, ":3").load().isEmpty());
}

TEST(GammaRecoveryFile, OlderFilesByDisplayIdStillLoadAndBadIdsAreSkipped)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("dimmed-displays.json");
    const QByteArray tables = R"({"red":"AAD//w==","green":"AAD//w==","blue":"AAD//w=="})";
    QByteArray entries;
    for (const char* id : {"63", "8589934590", "-5", "1e300", "7.5", "0", "4294967295"})
        entries += QByteArray(entries.isEmpty() ? "" : ",") + R"({"id":)" + id + R"(,"original":)" + tables + R"(,"applied":)" + tables + "}";
    writeFile(path, R"({"display":":0","displays":[)" + entries + "]}");
    QSet<quint32> ids;
    for (const auto& change : GammaRecoveryFile(path, ":0").load()) {
        EXPECT_TRUE(change.key.isEmpty());
        ids << change.displayId;
    }
    EXPECT_EQ(ids, QSet<quint32>({63, 4294967295u}));
}

static QStringList idsOf(const QList<CleanupLocation>& locations)
{
    QStringList ids;
    for (const auto& l : locations) ids << l.id;
    return ids;
}

TEST(XdgUserFiles, ListsEachCacheLogsAndDeveloperCachesButNoRepositoryThatCannotBeDownloadedAgain)
{
    QTemporaryDir dir;
    const QString home = dir.filePath("home"), cache = home + "/.cache", data = home + "/.local/share";
    writeFile(cache + "/browser/cache.bin", QByteArray(10000, 'x'));
    writeFile(cache + "/thumbnails/a.png", "png");
    writeFile(cache + "/pip/wheels/a.whl", QByteArray(5000, 'y'));
    writeFile(home + "/.xsession-errors.old", "old log");
    writeFile(home + "/.cargo/registry/cache/crate.tar", "crate");
    writeFile(home + "/.m2/repository/org/example/app/1.0/app-1.0.jar", "installed here and nowhere else");
    XdgUserFiles files(home, cache, data, dir.filePath("crash"), [] { return QStringList(); });

    // A program of ours has a file open in one of them.
    QFile open(cache + "/thumbnails/a.png");
    ASSERT_TRUE(open.open(QIODevice::ReadOnly));
    const auto locations = files.cleanupLocations();
    EXPECT_EQ(idsOf(locations), QStringList({"cache:browser", "cache:thumbnails", "logs", "pip", "cargo"}));
    EXPECT_EQ(locations[0].title, "browser");
    EXPECT_EQ(locations[0].paths, QStringList{cache + "/browser"});
    EXPECT_TRUE(locations[0].appCache);
    EXPECT_TRUE(locations[0].usedBy.isEmpty());
    QFile comm(QStringLiteral("/proc/self/comm"));
    ASSERT_TRUE(comm.open(QIODevice::ReadOnly));
    EXPECT_EQ(locations[1].usedBy, QString::fromUtf8(comm.readAll().trimmed()));
    EXPECT_EQ(locations[2].title, "Logs");
    EXPECT_FALSE(locations[2].appCache);
    EXPECT_EQ(locations[2].paths, QStringList{home + "/.xsession-errors.old"});

    std::atomic_bool cancelled{false};
    EXPECT_GE(files.sizeOnDisk(cache + "/browser", cancelled), 10000u);
    EXPECT_EQ(files.sizeOnDisk(dir.filePath("missing"), cancelled), 0u);
}

TEST(XdgUserFiles, ACacheFolderThatCouldHoldMoreThanCachesFallsBackToTheHomeCache)
{
    QTemporaryDir dir;
    const QString home = dir.filePath("home"), data = home + "/.local/share";
    QDir().mkpath(home);
    QFile::link(home, dir.filePath("link-to-home"));
    for (const QString& refused : {QString(), QStringLiteral("relative/cache"), QStringLiteral("/"), QStringLiteral("/tmp"),
                                   QStringLiteral("/tmp/"), home, home + "/", home + "/..", dir.path(), dir.filePath("link-to-home"),
                                   home + "/.local", data})
        EXPECT_EQ(XdgUserFiles::cacheHome(refused, home, data), home + "/.cache") << qPrintable(refused);
    for (const QString& kept : {home + "/.cache-elsewhere", dir.filePath("fast-disk/cache"), QStringLiteral("/tmp/orlo-user-cache")})
        EXPECT_EQ(XdgUserFiles::cacheHome(kept, home, data), kept);
}

TEST(XdgUserFiles, LinksAreMovedMeasuredAndRemovedAsLinksNeverFollowed)
{
    QTemporaryDir dir;
    const QString home = dir.filePath("home"), cache = home + "/.cache", data = home + "/.local/share";
    const QString outside = dir.filePath("outside");
    writeFile(outside + "/precious.txt", QByteArray(50000, 'p'));
    QDir().mkpath(cache);
    ASSERT_TRUE(QFile::link(outside, cache + "/linked"));
    ASSERT_TRUE(QFile::link(dir.filePath("nowhere"), cache + "/dangling"));
    writeFile(cache + "/holder/file", "x");
    ASSERT_TRUE(QFile::link(outside, cache + "/holder/inner-link"));
    XdgUserFiles files(home, cache, data, dir.filePath("crash"), [] { return QStringList(); });
    std::atomic_bool cancelled{false};
    EXPECT_LT(files.sizeOnDisk(cache + "/linked", cancelled), 50000u);

    QString error;
    for (const char* name : {"/linked", "/dangling", "/holder"}) {
        EXPECT_TRUE(files.moveToTrash(cache + name, &error)) << name << ": " << qPrintable(error);
        EXPECT_FALSE(QFileInfo::exists(cache + name) || QFileInfo(cache + name).isSymLink()) << name;
    }
    EXPECT_TRUE(QFileInfo(data + "/Trash/files/linked").isSymLink());
    EXPECT_TRUE(QFileInfo(data + "/Trash/files/dangling").isSymLink());
    EXPECT_TRUE(QFileInfo::exists(data + "/Trash/info/linked.trashinfo"));
    EXPECT_LT(files.trashSize(cancelled), 50000u);
    EXPECT_TRUE(QFile::link(outside, data + "/Trash/files/put-there"));

    EXPECT_TRUE(files.emptyTrash(&error)) << qPrintable(error);
    EXPECT_TRUE(QDir(data + "/Trash/files").isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
    EXPECT_TRUE(QDir(data + "/Trash/info").isEmpty());
    EXPECT_EQ(QFileInfo(outside + "/precious.txt").size(), 50000);

    // A Trash whose files folder is a link is not the user's to empty.
    QDir(data + "/Trash/files").removeRecursively();
    ASSERT_TRUE(QFile::link(outside, data + "/Trash/files"));
    EXPECT_EQ(files.trashSize(cancelled), 0u);
    files.emptyTrash(&error);
    EXPECT_EQ(QFileInfo(outside + "/precious.txt").size(), 50000);
}

TEST(XdgUserFiles, TheTrashFoldersOfOtherVolumesAreMeasuredAndEmptiedToo)
{
    QTemporaryDir dir;
    const QString home = dir.filePath("home"), data = home + "/.local/share";
    const QString volume = dir.filePath("media/usb"), planted = dir.filePath("media/planted");
    const QString uid = QString::number(getuid());
    writeFile(data + "/Trash/files/old.txt", QByteArray(4000, 'o'));
    writeFile(volume + "/.Trash-" + uid + "/files/photo.jpg", QByteArray(30000, 'j'));
    writeFile(volume + "/.Trash-" + uid + "/info/photo.jpg.trashinfo", "[Trash Info]\nPath=photo.jpg\n");
    writeFile(volume + "/kept.txt", "not in the Trash");
    // Someone else's volume whose Trash is a link into this user's files.
    writeFile(dir.filePath("mine/notes.txt"), QByteArray(20000, 'n'));
    QDir().mkpath(planted);
    ASSERT_TRUE(QFile::link(dir.filePath("mine"), planted + "/.Trash-" + uid));
    XdgUserFiles files(home, home + "/.cache", data, dir.filePath("crash"), [&] { return QStringList{volume, planted}; });

    std::atomic_bool cancelled{false};
    const quint64 size = files.trashSize(cancelled);
    EXPECT_GE(size, 34000u);
    EXPECT_LT(size, 54000u);
    QString error;
    EXPECT_TRUE(files.emptyTrash(&error)) << qPrintable(error);
    EXPECT_EQ(files.trashSize(cancelled), 0u);
    EXPECT_FALSE(QFileInfo::exists(volume + "/.Trash-" + uid + "/files/photo.jpg"));
    EXPECT_FALSE(QFileInfo::exists(volume + "/.Trash-" + uid + "/info/photo.jpg.trashinfo"));
    EXPECT_TRUE(QFileInfo::exists(volume + "/kept.txt"));
    EXPECT_TRUE(QFileInfo::exists(dir.filePath("mine/notes.txt")));
}
