#include "FakePlatform.h"
#include "system/SystemMonitor.h"
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct Monitor : ::testing::Test {
    fakes::FakePlatform platform;
    SystemMonitor monitor{*platform.processes, *platform.workspace};
    qint64 now = 1'700'000'000'000;

    void SetUp() override { monitor.clock = [this] { return now; }; }
    bool waitForSample(int count)
    {
        int seen = 0;
        QObject listening;
        QObject::connect(&monitor, &SystemMonitor::changed, &listening, [&seen] { ++seen; });
        return QTest::qWaitFor([&] { return seen >= count && !monitor.inFlight(); }, 3000);
    }
    static ProcessSampler::Result result(double cpu, int apps)
    {
        ProcessSampler::Result r;
        r.cpu = cpu;
        for (int i = 0; i < apps; ++i) r.apps << AppUsage{i + 1, QString::number(i), {}, true, double(i), quint64(100 - i), {}};
        return r;
    }
};

}  // namespace

TEST_F(Monitor, StartSamplesOnceAtOnceAndPacesByViewers)
{
    platform.fakeWorkspace->running = {AppInfo{50, "org.example.Term", "Term"}};
    platform.fakeProcesses->add(50, 1, "term", 0, 10);
    EXPECT_FALSE(monitor.hasSample());
    monitor.start();
    monitor.start();  // no second timer, no second sample
    ASSERT_TRUE(waitForSample(1));
    EXPECT_TRUE(monitor.hasSample());
    EXPECT_EQ(monitor.history().size(), 1);
    ASSERT_EQ(monitor.apps().size(), 1);
    EXPECT_EQ(monitor.apps().first().name, "Term");

    // Nobody watching: about every ten seconds.
    now += 9'000;
    monitor.tick();
    EXPECT_FALSE(monitor.inFlight());
    now += 750;
    monitor.tick();
    EXPECT_TRUE(monitor.inFlight());
    ASSERT_TRUE(waitForSample(1));

    // A view is open: about every two seconds.
    monitor.addViewer();
    now += 1'700;
    monitor.tick();
    EXPECT_FALSE(monitor.inFlight());
    now += 50;
    monitor.tick();
    EXPECT_TRUE(monitor.inFlight());
    monitor.sampleNow();  // one sample at a time
    ASSERT_TRUE(waitForSample(1));
    EXPECT_EQ(monitor.history().size(), 3);
    monitor.removeViewer();
    monitor.removeViewer();
    EXPECT_EQ(monitor.viewers(), 0);

    // A clock set back an hour neither stops the sampling until it has caught up nor keeps
    // the samples of the future.
    now -= 3'600'000;
    monitor.tick();
    EXPECT_TRUE(monitor.inFlight());
    ASSERT_TRUE(waitForSample(1));
    EXPECT_EQ(monitor.history().size(), 1);

    monitor.pause();
    EXPECT_FALSE(monitor.isScheduled());
    EXPECT_TRUE(monitor.hasSample());  // the last values stay
}

TEST_F(Monitor, HistoryKeepsFiveMinutesWithTheFiveBusiestApplications)
{
    for (int i = 0; i < 200; ++i) {
        monitor.apply(result(i % 100, 8));
        now += 2'000;
    }
    const auto& history = monitor.history();
    ASSERT_FALSE(history.isEmpty());
    EXPECT_GE(history.first().date.toMSecsSinceEpoch(), now - 2'000 - 300'000);
    EXPECT_EQ(history.size(), 151);
    for (const UsageSample& sample : history) ASSERT_EQ(sample.top.size(), 5);
    EXPECT_EQ(history.last().top.first().cpu, 7);  // busiest first
}

TEST_F(Monitor, SortsByCpuOrMemoryAndQuitsPolitelyOrByForce)
{
    monitor.apply(result(10, 3));
    EXPECT_EQ(monitor.sorted(SystemMonitor::SortKey::Cpu).first().pid, 3);
    EXPECT_EQ(monitor.sorted(SystemMonitor::SortKey::Memory).first().pid, 1);

    auto& processes = *platform.fakeProcesses;
    processes.add(1, 0, "editor");
    processes.add(9, 0, "daemon");
    platform.fakeWorkspace->running = {AppInfo{1, "org.example.Editor", "Editor"}};
    const AppUsage editor{1, "Editor", {}, true, 0, 0, {}, processes.processes[1].startTime};
    EXPECT_EQ(monitor.quit(editor, false), "Unsaved changes in Editor may ask to save changes first.");
    EXPECT_EQ(platform.fakeWorkspace->closed, QList<qint64>{1});
    EXPECT_TRUE(processes.terminated.isEmpty());
    EXPECT_EQ(monitor.quit(editor, true), QString());
    const AppUsage daemon{9, "daemon", {}, false, 0, 0, {}, processes.processes[9].startTime};
    monitor.quit(daemon, false);
    EXPECT_EQ(processes.terminated, (QList<QPair<qint64, bool>>{{1, true}, {9, false}}));
}

TEST_F(Monitor, QuitSaysInOneLineWhenAProcessOutlivesItAndNeverSignalsAPidTakenSince)
{
    auto& processes = *platform.fakeProcesses;
    monitor.quitGraceMs = 10;
    QStringList notes;
    QObject::connect(&monitor, &SystemMonitor::quitFailed, [&notes](const QString& note) { notes << note; });
    auto usage = [&](qint64 pid, const QString& name) { return AppUsage{pid, name, {}, false, 0, 0, {}, processes.processes[pid].startTime}; };

    processes.add(20, 1, "stubborn");
    processes.ignoring << 20;
    EXPECT_EQ(monitor.quit(usage(20, "stubborn"), false), QString());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !notes.isEmpty(); }, 3000));
    EXPECT_EQ(notes.takeFirst(), "“stubborn” is still running: it did not respond to Quit. Force Quit ends it at once.");

    processes.unkillable << 20;
    monitor.quit(usage(20, "stubborn"), true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !notes.isEmpty(); }, 3000));
    EXPECT_EQ(notes.takeFirst(), "“stubborn” is still running after Force Quit: it may be stuck waiting for a disk or device.");

    processes.add(21, 1, "root-daemon");
    processes.refusing << 21;
    EXPECT_EQ(monitor.quit(usage(21, "root-daemon"), true), "Orlo is not allowed to quit “root-daemon”.");

    // Sampled, ended, and its pid since taken by another process.
    processes.add(22, 1, "gone");
    const AppUsage sampled = usage(22, "gone");
    processes.add(22, 1, "newcomer");
    processes.processes[22].startTime += 1;
    EXPECT_EQ(monitor.quit(sampled, true), "“gone” had already quit.");
    EXPECT_EQ(processes.terminated, (QList<QPair<qint64, bool>>{{20, false}, {20, true}}));

    // One that ends as asked is not reported.
    processes.add(23, 1, "willing");
    monitor.quit(usage(23, "willing"), false);
    processes.add(24, 1, "marker");
    processes.ignoring << 24;
    monitor.quit(usage(24, "marker"), false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !notes.isEmpty(); }, 3000));
    EXPECT_EQ(notes, QStringList{"“marker” is still running: it did not respond to Quit. Force Quit ends it at once."});
}

TEST_F(Monitor, HelpersInsideAnApplicationsBundleCountForTheApplication)
{
    platform.fakeWorkspace->running = {AppInfo{50, "org.example.Browser", "Browser", {"/Applications/Browser.app"}}};
    platform.fakeProcesses->add(50, 1, "browser", 0, 10);
    // Started by launchd, not by the browser: only its path ties it to the browser.
    platform.fakeProcesses->add(60, 1, "renderer", 0, 30);
    platform.fakeProcesses->processes[60].path = "/Applications/Browser.app/Contents/Frameworks/Renderer.app/Contents/MacOS/renderer";
    monitor.start();
    ASSERT_TRUE(waitForSample(1));
    ASSERT_EQ(monitor.apps().size(), 1);
    EXPECT_EQ(monitor.apps().first().name, "Browser");
    EXPECT_EQ(monitor.apps().first().memory, 40u);
}
