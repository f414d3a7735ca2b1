// The real Orlo in a private X session, driven from the outside as a user would.
#include "StatusNotifierWatcher.h"
#include "VirtualSession.h"
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::StatusNotifierWatcher;
using orlo::testing::VirtualSession;

namespace {

class AppSession : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.start()) << qPrintable(session.error()); }

    QString settingsFile() const { return session.configHome() + "/Orlo/settings.json"; }
    QString readFile(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
    bool visible(const QString& title) { return !session.findWindows("^" + title + "$").isEmpty(); }

    VirtualSession session;
};

}  // namespace

TEST_F(AppSession, TrayIconOpensThePanelWhoseSwitchStopsAModuleAtOnce)
{
    OrloProcess orlo(session);
    QRect tray;
    ASSERT_TRUE(orlo.waitForTray(&tray)) << qPrintable(orlo.log());
    ASSERT_TRUE(orlo.waitForLine("started clipboard"));
    EXPECT_FALSE(tray.isEmpty());

    // The tray may still move its icons as it settles: click where the icon is now.
    const QStringList icons = session.output("xdotool", {"search", "--onlyvisible", "--classname", "^orlo$"}).split('\n');
    ASSERT_EQ(icons.size(), 1);
    tray = session.windowGeometry(icons.first());
    session.click(tray.center().x(), tray.center().y());
    ASSERT_TRUE(VirtualSession::waitFor([&] { return visible("Orlo Panel"); })) << qPrintable(orlo.log());
    session.screenshot("panel.png");

    // The panel opens with the first switch focused; the fourth is the clipboard's.
    session.key("Tab");
    session.key("Tab");
    session.key("Tab");
    session.key("space");
    ASSERT_TRUE(orlo.waitForLine("stopped clipboard")) << qPrintable(orlo.log());
    EXPECT_FALSE(orlo.log().contains("stopped system"));
    EXPECT_TRUE(VirtualSession::waitFor([&] { return readFile(settingsFile()).contains("\"clipboard.enabled\": false"); }));
}

TEST_F(AppSession, SecondLaunchOpensTheSettingsWhereOpenAtLoginWritesTheAutostartEntry)
{
    OrloProcess orlo(session);
    ASSERT_TRUE(orlo.waitForTray());
    QString output;
    EXPECT_EQ(session.run(VirtualSession::builtProgram("orlo"), {}, &output), 0) << qPrintable(output);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return visible("Orlo Settings"); }));
    EXPECT_EQ(orlo.process().state(), QProcess::Running);
    session.screenshot("settings.png");

    // The window opens on the general page: the first control after the sidebar is "Open at login".
    const QString autostart = session.configHome() + "/autostart/app.orlo.Orlo.desktop";
    session.key("Tab");
    session.key("space");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return QFile::exists(autostart); }));
    EXPECT_TRUE(readFile(autostart).contains("Exec="));
    session.key("space");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !QFile::exists(autostart); }));
}

TEST_F(AppSession, CorruptSettingsFileIsKeptAsideAndOrloStartsOnDefaults)
{
    QDir().mkpath(session.configHome() + "/Orlo");
    QFile bad(settingsFile());
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("{\"clipboard.enabled\": fal");
    bad.close();

    OrloProcess orlo(session);
    ASSERT_TRUE(orlo.waitForTray()) << qPrintable(orlo.log());
    ASSERT_TRUE(orlo.waitForLine("started clipboard"));
    EXPECT_EQ(orlo.log().count("could not be read"), 1);
    const QStringList aside = QDir(session.configHome() + "/Orlo").entryList({"settings.json.unreadable-*"});
    ASSERT_EQ(aside.size(), 1);
    EXPECT_EQ(readFile(session.configHome() + "/Orlo/" + aside.first()), "{\"clipboard.enabled\": fal");

    // Quitting by SIGTERM is orderly.
    orlo.quit();
    EXPECT_EQ(orlo.process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(orlo.process().exitCode(), 0);
}

TEST(NoTraySession, TheSettingsOpenAtTheFirstStartAndTellHowToComeBack)
{
    // Stock GNOME: neither a system tray nor a StatusNotifierItem watcher.
    VirtualSession session;
    session.setSystemTray(false);
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    {
        OrloProcess orlo(session);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Settings$").isEmpty(); }))
            << qPrintable(orlo.log());
        ASSERT_TRUE(orlo.waitForLine("started clipboard"));
        VirtualSession::waitFor([] { return false; }, 300);
        session.screenshot(VirtualSession::screenshotPath("settings-without-tray.png"));
    }
    // The next start stays quiet; starting Orlo again still opens the settings.
    OrloProcess orlo(session);
    ASSERT_TRUE(orlo.waitForLine("started clipboard"));
    // Once Orlo has answered on the bus, what it does at its start is done.
    ASSERT_EQ(session.run("gdbus", {"call", "--session", "--dest", "app.orlo.Orlo", "--object-path", "/app/orlo/Orlo", "--method",
                                    "org.freedesktop.DBus.Properties.Get", "app.orlo.Orlo", "ClipboardEnabled"}),
              0);
    EXPECT_TRUE(session.findWindows("^Orlo Settings$").isEmpty());
    EXPECT_EQ(session.run(VirtualSession::builtProgram("orlo"), {}), 0);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Settings$").isEmpty(); }));
}

TEST(NoTraySession, AStatusNotifierWatcherGetsOrlosItem)
{
    VirtualSession session;
    session.setSystemTray(false);
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    StatusNotifierWatcher watcher(session.busAddress());
    ASSERT_TRUE(watcher.isRegistered());
    OrloProcess orlo(session);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !watcher.items.isEmpty(); })) << qPrintable(orlo.log());
    ASSERT_TRUE(orlo.waitForLine("started clipboard"));
    EXPECT_TRUE(session.findWindows("^Orlo Settings$").isEmpty()) << "the item is the way back";
}
