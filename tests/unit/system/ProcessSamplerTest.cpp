#include "FakeSystemPorts.h"
#include "system/ProcessSampler.h"
#include <gtest/gtest.h>

using namespace orlo;
using SampledApp = ProcessSampler::RunningApp;

namespace {

constexpr quint64 Second = 1'000'000'000;

struct Sampler : ::testing::Test {
    fakes::FakeProcessTable table;
    ProcessSampler sampler{table};

    const AppUsage* find(const QList<AppUsage>& apps, qint64 pid)
    {
        for (const AppUsage& app : apps)
            if (app.pid == pid) return &app;
        return nullptr;
    }
};

}  // namespace

TEST_F(Sampler, MachineCpuComesFromTickDeltasAndNeverGoesNegativeOrAboveAHundred)
{
    table.ticks = CpuTicks{100, 1000};
    EXPECT_EQ(sampler.totalCPU(), 0);  // nothing to compare with yet
    table.ticks = CpuTicks{150, 1200};
    EXPECT_DOUBLE_EQ(sampler.totalCPU(), 25.0);
    table.ticks = CpuTicks{140, 1300};  // busy went backwards
    EXPECT_EQ(sampler.totalCPU(), 0);
    table.ticks = CpuTicks{140, 1300};  // no time passed
    EXPECT_EQ(sampler.totalCPU(), 0);
    table.ticks = CpuTicks{400, 1400};  // more busy than total: a counter wrapped
    EXPECT_EQ(sampler.totalCPU(), 100);
    table.ticks.reset();
    EXPECT_EQ(sampler.totalCPU(), 0);
}

TEST_F(Sampler, MemoryAndPressureFallBackQuietly)
{
    table.memoryUse = MemoryUse{3'000, 8'000};
    auto result = sampler.sample({});
    EXPECT_EQ(result.memoryUsed, 3'000u);
    EXPECT_EQ(result.memoryTotal, 8'000u);
    EXPECT_EQ(result.pressure, 1);  // the system does not tell
    table.pressure = 4;
    table.memoryUse.reset();
    result = sampler.sample({});
    EXPECT_EQ(result.pressure, 4);
    EXPECT_EQ(result.memoryUsed, 0u);
}

TEST_F(Sampler, ProcessCpuIsTheTimeDeltaOverElapsedAndZeroForNewRestartedOrFirstSamples)
{
    table.add(10, 1, "busy", 0);
    table.add(11, 1, "restarted", 5 * Second);
    auto apps = sampler.sample({});
    ASSERT_EQ(apps.apps.size(), 2);
    for (const AppUsage& app : apps.apps) EXPECT_EQ(app.cpu, 0) << qPrintable(app.name);

    table.now += 2 * Second;
    table.setCpuTime(10, Second);       // half a processor over two seconds
    table.setCpuTime(11, Second);       // went backwards: the pid was reused
    table.add(12, 1, "newcomer", Second);
    apps = sampler.sample({});
    EXPECT_DOUBLE_EQ(find(apps.apps, 10)->cpu, 50.0);
    EXPECT_EQ(find(apps.apps, 11)->cpu, 0);
    EXPECT_EQ(find(apps.apps, 12)->cpu, 0);
    EXPECT_EQ(apps.apps.first().pid, 10);  // busiest first

    // Ended processes are forgotten: a pid that comes back later starts from nothing.
    table.processes.remove(10);
    table.now += Second;
    sampler.sample({});
    table.add(10, 1, "busy", 3 * Second);
    table.now += Second;
    apps = sampler.sample({});
    EXPECT_EQ(find(apps.apps, 10)->cpu, 0);
}

TEST_F(Sampler, HelpersJoinTheirApplicationByBundleAncestryResponsibilityOrLaunchUnit)
{
    table.add(100, 1, "browser", 0, 500, "app-browser.scope");
    table.add(101, 100, "renderer", 0, 300, "app-browser.scope");
    table.add(102, 101, "gpu", 0, 200);                    // grandchild
    table.add(103, 1, "crash-handler", 0, 50, "app-browser.scope");  // reparented, same unit
    table.add(200, 1, "editor", 0, 100);
    table.add(201, 1, "indexer", 0, 80);
    table.responsible.insert(201, 200);
    table.add(300, 1, "daemon", 0, 70);
    table.processes[400] = ProcessRecord{1, "/Applications/Mail.app/Contents/XPCServices/Helper.xpc/Helper", "Helper", 0, 40, {}};

    const QList<SampledApp> running{{100, "Browser", {}}, {200, "Editor", {}}, {500, "Mail", {"/Applications/Mail.app"}}};
    const auto apps = sampler.sample(running).apps;

    const AppUsage* browser = find(apps, 100);
    ASSERT_TRUE(browser);
    EXPECT_TRUE(browser->isApp);
    EXPECT_EQ(browser->name, "Browser");
    EXPECT_EQ(browser->memory, 1050u);
    EXPECT_EQ(browser->children.size(), 4);
    EXPECT_EQ(browser->children.first().pid, 100);  // the biggest first
    EXPECT_EQ(find(apps, 200)->children.size(), 2);
    EXPECT_EQ(find(apps, 500)->children.size(), 1);  // a process inside the application's bundle
    const AppUsage* daemon = find(apps, 300);
    ASSERT_TRUE(daemon);
    EXPECT_FALSE(daemon->isApp);
    EXPECT_TRUE(daemon->children.isEmpty());
    EXPECT_EQ(apps.size(), 4);
}

TEST_F(Sampler, ProcessCpuIsAShareOfTheWholeMachineLikeTheMachineFigure)
{
    table.ticks = CpuTicks{0, 0, 16};
    table.add(10, 1, "build", 0);
    sampler.sample({});
    table.ticks = CpuTicks{400, 1600, 16};  // a quarter of the machine busy
    table.now += Second;
    table.setCpuTime(10, 4 * Second);  // four of the sixteen processors for a second
    const auto result = sampler.sample({});
    EXPECT_DOUBLE_EQ(result.cpu, 25.0);
    EXPECT_EQ(result.processors, 16);
    EXPECT_DOUBLE_EQ(find(result.apps, 10)->cpu, 25.0);
}

TEST_F(Sampler, OtherUsersProcessesAreLeftOutButStillLeadToTheirChildren)
{
    table.memoryUse = MemoryUse{9'000, 16'000};  // everyone's
    table.add(100, 1, "editor", 0, 500);
    table.add(200, 100, "pkexec", 0, 70);
    table.processes[200].ownedByUser = false;
    table.add(201, 200, "helper", 0, 30);  // ours again, below someone else's
    table.add(300, 1, "Xorg", 0, 900);
    table.processes[300].ownedByUser = false;
    const auto result = sampler.sample({{100, "Editor", {}}});
    EXPECT_EQ(result.memoryUsed, 9'000u);
    ASSERT_EQ(result.apps.size(), 1);
    QList<qint64> listed;
    for (const ProcessUsage& p : result.apps.first().children) listed << p.pid;
    EXPECT_EQ(listed, (QList<qint64>{100, 201}));
}

TEST_F(Sampler, AFlatpakApplicationGathersTheProcessesOfItsScope)
{
    // The window's pid is the sandbox's own, no process of this machine's: the scope tells.
    const QString scope = "app-flatpak-org.gnome.Calculator-4711.scope";
    table.add(5000, 1, "bwrap", 0, 10, scope);
    table.add(5001, 5000, "gnome-calculator", 0, 300, scope);
    table.processes[5000].sandboxedApp = table.processes[5001].sandboxedApp = "org.gnome.Calculator";
    table.add(6000, 1, "other", 0, 5, "app-flatpak-org.other.App-12.scope");
    table.processes[6000].sandboxedApp = "org.other.App";
    const auto apps = sampler.sample({{2, "Calculator", {}, "org.gnome.Calculator.desktop"}}).apps;
    const AppUsage* calculator = find(apps, 2);
    ASSERT_TRUE(calculator);
    EXPECT_EQ(calculator->children.size(), 2);
    EXPECT_EQ(calculator->memory, 310u);
    EXPECT_FALSE(find(apps, 6000)->isApp);
}

TEST_F(Sampler, AncestorWalksStopAtLoopsAndAtTheirLimit)
{
    table.add(10, 11, "a");
    table.add(11, 10, "b");  // a loop
    qint64 pid = 1000;
    table.add(pid, 1, "app");
    for (int depth = 1; depth <= ProcessSampler::MaxAncestorSteps + 1; ++depth) table.add(pid + depth, pid + depth - 1, "deep");
    const auto apps = sampler.sample({{1000, "App", {}}}).apps;
    EXPECT_FALSE(find(apps, 10)->isApp);
    EXPECT_EQ(find(apps, 1000)->children.size(), ProcessSampler::MaxAncestorSteps + 1);
    EXPECT_TRUE(find(apps, pid + ProcessSampler::MaxAncestorSteps + 1));  // too deep: on its own
}

TEST(ProcessSamplerBundles, EveryApplicationPrefixOutermostFirst)
{
    EXPECT_EQ(ProcessSampler::candidateBundles("/Applications/Xcode.app/Contents/Applications/Simulator.app/Contents/MacOS/Simulator"),
              QStringList({"/Applications/Xcode.app", "/Applications/Xcode.app/Contents/Applications/Simulator.app"}));
    EXPECT_TRUE(ProcessSampler::candidateBundles("/usr/bin/firefox").isEmpty());
}
