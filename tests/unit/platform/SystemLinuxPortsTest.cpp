#include "platform/linux/GammaRecoveryFile.h"
#include "platform/linux/ProcFsProcessTable.h"
#include "platform/linux/XdgUserFiles.h"
#include "platform/x11/Edid.h"
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <algorithm>
#include <unistd.h>
#include <gtest/gtest.h>

using namespace orlo;

static void writeFile(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text);
}

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
    writeFile(proc.filePath("stat"), "cpu  100 20 30 800 50 5 5 0 0 0\ncpu0 1 2 3 4\n");
    writeFile(proc.filePath("meminfo"), "MemTotal:       16000 kB\nMemFree:  1000 kB\nMemAvailable:   12000 kB\n");
    writeFile(proc.filePath("pressure/memory"), "some avg10=12.50 avg60=1.00 avg300=0.00 total=1\nfull avg10=0.00 avg60=0.00 avg300=0.00 total=0\n");
    const QByteArray tail = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
    writeFile(proc.filePath("42/stat"), "42 (my (odd) prog) S 7 42 42 0 -1 4194304 100 0 0 0 250 50 0 0 20 0 1 0 5555 1000000 300" + tail);
    writeFile(proc.filePath("42/cgroup"), "0::/user.slice/user-1000.slice/user@1000.service/app.slice/app-gnome-firefox-2314.scope\n");
    writeFile(proc.filePath("43/stat"), "43 (kworker/0:1) I 2 0 0 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 10 0 0" + tail);
    QDir().mkpath(proc.filePath("self"));

    ProcFsProcessTable table(proc.path());
    const CpuTicks ticks = *table.cpuTicks();
    EXPECT_EQ(ticks.busy, 160u);
    EXPECT_EQ(ticks.total, 1010u);
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
    EXPECT_FALSE(table.read(43));  // a kernel thread
    EXPECT_FALSE(table.read(44));  // gone
}

TEST(ProcFsProcessTable, ASleepingProcessIsOnlyReadAgainWhenItRanOrNowAndThen)
{
    QTemporaryDir proc;
    const QByteArray tail = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
    auto stat = [&](int utime, int rss) {
        writeFile(proc.filePath("30/stat"), QStringLiteral("30 (sleeper) S 1 30 30 0 -1 0 0 0 0 0 %1 0 0 0 20 0 1 0 77 0 %2")
                                                .arg(utime).arg(rss).toLatin1() + tail);
    };
    stat(100, 10);
    writeFile(proc.filePath("30/schedstat"), "5000 0 1\n");
    ProcFsProcessTable table(proc.path());
    EXPECT_EQ(table.read(30)->memory, 10ull * sysconf(_SC_PAGESIZE));

    stat(100, 20);  // memory changed while it did not run
    int looks = 1;
    for (; looks < ProcFsProcessTable::RefreshEvery && table.read(30)->memory == 10ull * sysconf(_SC_PAGESIZE); ++looks) {}
    EXPECT_GT(looks, 1);
    EXPECT_LE(looks, ProcFsProcessTable::RefreshEvery);  // read again now and then

    stat(200, 20);
    writeFile(proc.filePath("30/schedstat"), "9000 0 2\n");  // it ran
    EXPECT_EQ(table.read(30)->cpuTime, 200ull * 1'000'000'000ull / sysconf(_SC_CLK_TCK));

    QDir(proc.filePath("30")).removeRecursively();  // it ended
    EXPECT_TRUE(table.allPids().isEmpty());
    EXPECT_FALSE(table.read(30));
}

TEST(ProcFsProcessTable, PressureLevelsAndLaunchUnits)
{
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=0.10 avg60=0 avg300=0 total=0\nfull avg10=0.00 avg60=0 avg300=0 total=0\n"), 1);
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=45.00 avg60=0 avg300=0 total=0\n"), 4);
    EXPECT_EQ(ProcFsProcessTable::pressureLevel("some avg10=5.00 avg60=0 avg300=0 total=0\nfull avg10=11.00 avg60=0 avg300=0 total=0\n"), 4);
    EXPECT_FALSE(ProcFsProcessTable::pressureLevel(""));
    EXPECT_EQ(ProcFsProcessTable::launchUnit("0::/user.slice/user-1000.slice/user@1000.service/app.slice/"
                                             "app-org.gnome.Terminal.slice/vte-spawn-1f.scope\n"),
              "app-org.gnome.Terminal.slice");
    EXPECT_EQ(ProcFsProcessTable::launchUnit("0::/user.slice/user-1000.slice/session-2.scope\n"), "");
}

TEST(ProcFsProcessTable, StatLinesNamesAndTheirCutShortForms)
{
    const char line[] = "1234 (a) (b) S 1 1234 1234 0 -1 4194560 1000 0 0 0 250 125 0 0 20 0 3 0 98765 123456789 2048 0\n";
    const auto stat = ProcFsProcessTable::stat(line, qsizetype(sizeof line - 1));
    ASSERT_TRUE(stat.has_value());
    EXPECT_EQ(stat->comm.toByteArray(), QByteArray("a) (b"));
    EXPECT_EQ(stat->ppid, 1);
    EXPECT_EQ(stat->cpuTicks, 375u);
    EXPECT_EQ(stat->threads, 3);
    EXPECT_EQ(stat->startTime, 98765u);
    EXPECT_EQ(stat->residentPages, 2048u);
    for (const char* cut : {"1234 (a) S 1 1234", "1234 (a)", "1234 a) S (b", ""})
        EXPECT_FALSE(ProcFsProcessTable::stat(cut, qsizetype(strlen(cut)))) << cut;
    EXPECT_EQ(ProcFsProcessTable::runTime("123456789 4567 89\n"), 123456789u);
}

TEST(ProcFsProcessTable, SeesThisProcessWithItsOwnCpuTime)
{
    ProcFsProcessTable table;
    const auto self = table.read(getpid());
    ASSERT_TRUE(self);
    EXPECT_EQ(self->ppid, getppid());
    EXPECT_GT(self->memory, 0u);
    EXPECT_TRUE(table.allPids().contains(getpid()));
    EXPECT_GT(table.monotonicNanoseconds(), 0u);
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

TEST(XdgUserFiles, ListsCachesLogsAndDeveloperCachesAndUsesTheTrash)
{
    QTemporaryDir dir;
    const QString home = dir.filePath("home"), cache = home + "/.cache", data = home + "/.local/share";
    writeFile(cache + "/browser/cache.bin", QByteArray(10000, 'x'));
    writeFile(cache + "/pip/wheels/a.whl", QByteArray(5000, 'y'));
    writeFile(home + "/.xsession-errors.old", "old log");
    writeFile(home + "/.cargo/registry/cache/crate.tar", "crate");
    // Qt's Trash follows HOME and XDG_DATA_HOME.
    const QByteArray realHome = qgetenv("HOME");
    qputenv("HOME", home.toLocal8Bit());
    qputenv("XDG_DATA_HOME", data.toLocal8Bit());
    XdgUserFiles files(home, cache, data, dir.filePath("crash"));

    const auto locations = files.cleanupLocations();
    QStringList ids;
    for (const auto& l : locations) ids << l.id;
    EXPECT_EQ(ids, QStringList({"caches", "logs", "pip", "cargo"}));
    EXPECT_EQ(locations[0].title, "App caches");
    EXPECT_EQ(locations[0].paths, QStringList{cache + "/browser"});  // the pip cache is listed on its own
    EXPECT_EQ(locations[1].title, "Logs");
    EXPECT_EQ(locations[1].paths, QStringList{home + "/.xsession-errors.old"});

    std::atomic_bool cancelled{false};
    EXPECT_GE(files.sizeOnDisk(cache + "/browser", cancelled), 10000u);
    EXPECT_EQ(files.sizeOnDisk(dir.filePath("missing"), cancelled), 0u);
    EXPECT_EQ(files.trashSize(cancelled), 0u);

    QString error;
    EXPECT_TRUE(files.moveToTrash(cache + "/browser", &error)) << qPrintable(error);
    EXPECT_FALSE(QFileInfo::exists(cache + "/browser"));
    EXPECT_TRUE(QFileInfo::exists(data + "/Trash/files/browser/cache.bin"));
    EXPECT_GE(files.trashSize(cancelled), 10000u);
    EXPECT_FALSE(files.moveToTrash(cache + "/nothing-here", &error));
    EXPECT_FALSE(error.isEmpty());

    EXPECT_TRUE(files.emptyTrash(&error));
    EXPECT_EQ(files.trashSize(cancelled), 0u);
    EXPECT_TRUE(QDir(data + "/Trash/info").isEmpty());
    qunsetenv("XDG_DATA_HOME");
    qputenv("HOME", realHome);
}
