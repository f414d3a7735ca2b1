// The system tools in the real Orlo: dimming through RandR gamma and its undoing, the
// keyboard lock, keeping the screen awake, and the process monitor.
#include "FakeLogind.h"
#include "VirtualSession.h"
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <QRegularExpression>
#include <cmath>
#include <algorithm>
#include <csignal>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/screensaver.h>
#include <gtest/gtest.h>

using orlo::testing::FakeLogind;
using orlo::testing::OrloProcess;
using orlo::testing::VirtualSession;

namespace {

using Ramp = std::vector<quint16>;  // red, green and blue one after the other

// The gamma of the session's one CRTC, read and set from outside Orlo.
class CrtcGamma {
public:
    explicit CrtcGamma(const QString& display) : c_(xcb_connect(display.toLocal8Bit().constData(), nullptr))
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c_)).data->root;
        auto* resources = xcb_randr_get_screen_resources_current_reply(c_, xcb_randr_get_screen_resources_current(c_, root), nullptr);
        if (resources && xcb_randr_get_screen_resources_current_crtcs_length(resources) > 0)
            crtc_ = xcb_randr_get_screen_resources_current_crtcs(resources)[0];
        free(resources);
    }
    ~CrtcGamma() { xcb_disconnect(c_); }

    Ramp read()
    {
        auto* reply = xcb_randr_get_crtc_gamma_reply(c_, xcb_randr_get_crtc_gamma(c_, crtc_), nullptr);
        Ramp ramp;
        if (reply) {
            for (auto* table : {xcb_randr_get_crtc_gamma_red(reply), xcb_randr_get_crtc_gamma_green(reply), xcb_randr_get_crtc_gamma_blue(reply)})
                ramp.insert(ramp.end(), table, table + reply->size);
        }
        free(reply);
        return ramp;
    }
    // A known ramp, slightly bent so that it differs from any default; another bend stands
    // for another program's tables (a night light, a calibration).
    Ramp setKnown(double bend = 0.9)
    {
        auto* size = xcb_randr_get_crtc_gamma_size_reply(c_, xcb_randr_get_crtc_gamma_size(c_, crtc_), nullptr);
        const int n = size ? size->size : 0;
        free(size);
        std::vector<quint16> table(n);
        for (int i = 0; i < n; ++i) table[i] = quint16(std::min(65535.0, 65535.0 * std::pow(i / double(n - 1), bend)));
        xcb_randr_set_crtc_gamma(c_, crtc_, quint16(n), table.data(), table.data(), table.data());
        xcb_flush(c_);
        return read();
    }
    static Ramp scaled(const Ramp& ramp, double level)
    {
        Ramp out;
        for (quint16 v : ramp) out.push_back(quint16(float(float(v) / 65535.0f * float(level)) * 65535.0f + 0.5f));
        return out;
    }
    bool screenSaverOn()
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c_)).data->root;
        auto* info = xcb_screensaver_query_info_reply(c_, xcb_screensaver_query_info(c_, root), nullptr);
        const bool on = info && info->state == XCB_SCREENSAVER_STATE_ON;
        free(info);
        return on;
    }
    // How long the user has not touched the keyboard or the pointer.
    quint32 idleMs()
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c_)).data->root;
        auto* info = xcb_screensaver_query_info_reply(c_, xcb_screensaver_query_info(c_, root), nullptr);
        const quint32 idle = info ? info->ms_since_user_input : 0;
        free(info);
        return idle;
    }
    // Once the user has been idle for longer than the saver's delay (set to a second by the
    // tests), the saver would be on but for what holds it back.
    bool saverDelayPassed() { return VirtualSession::waitFor([&] { return idleMs() > 2000; }, 6000); }

private:
    xcb_connection_t* c_;
    xcb_randr_crtc_t crtc_ = 0;
};

class SystemSession : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.start()) << qPrintable(session.error()); }

    void writeSettings(const QByteArray& json)
    {
        QDir().mkpath(session.configHome() + "/Orlo");
        QFile file(session.configHome() + "/Orlo/settings.json");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
    }
    // Where Orlo says one of its controls is, from its trace since the log had that length.
    QPoint tracedPoint(OrloProcess& orlo, const QString& what, qsizetype since = 0)
    {
        const QRegularExpression re(QRegularExpression::escape(what) + " at (\\d+),(\\d+)");
        QRegularExpressionMatch match;
        VirtualSession::waitFor([&] { return (match = re.match(orlo.log(), since)).hasMatch(); });
        return match.hasMatch() ? QPoint(match.captured(1).toInt(), match.captured(2).toInt()) : QPoint();
    }
    void openPanel(OrloProcess& orlo)
    {
        ASSERT_TRUE(orlo.waitForTray()) << qPrintable(orlo.log());
        panelOpenedAt_ = orlo.log().size();
        const QStringList icons = session.output("xdotool", {"search", "--onlyvisible", "--classname", "^orlo$"}).split('\n');
        ASSERT_FALSE(icons.isEmpty());
        const QRect tray = session.windowGeometry(icons.first());
        session.click(tray.center().x(), tray.center().y());
        ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Panel$").isEmpty(); }));
    }
    void clickPanelSwitch(OrloProcess& orlo, const QString& name)
    {
        const QPoint at = tracedPoint(orlo, "panel switch " + name, panelOpenedAt_);
        ASSERT_FALSE(at.isNull()) << qPrintable(orlo.log());
        session.click(at.x(), at.y());
    }

    VirtualSession session;
    qsizetype panelOpenedAt_ = 0;
};

struct KeyListener {
    QProcess* process;
    QString seen;
    KeyListener(VirtualSession& s) : process(s.launch(VirtualSession::builtProgram("orlo-test-window"), {"Keys"}))
    {
        EXPECT_TRUE(VirtualSession::waitFor([&] { return read().contains("ready"); }));
    }
    QString read() { return seen += QString::fromLocal8Bit(process->readAllStandardOutput()); }
};

}  // namespace

TEST_F(SystemSession, AStoredLevelDimsTheCrtcAndEveryWayOfEndingGivesTheRampBack)
{
    CrtcGamma gamma(session.display());
    const Ramp original = gamma.setKnown();
    ASSERT_FALSE(original.empty());
    writeSettings(R"({"system.dimLevels": {"output-screen": 0.5}})");
    for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
        OrloProcess orlo(session);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(original, 0.5); }))
            << qPrintable(orlo.log());
        ::kill(pid_t(orlo.process().processId()), signal);
        EXPECT_TRUE(orlo.process().waitForFinished(3000)) << signal;
        EXPECT_EQ(orlo.process().exitStatus(), QProcess::NormalExit) << signal;
        EXPECT_EQ(gamma.read(), original) << signal;
    }

    // Killed while dimmed, with the module switched off for the next start: only the
    // recovery file can bring the colours back, and it does before anything else.
    {
        OrloProcess orlo(session);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(original, 0.5); }));
        ::kill(pid_t(orlo.process().processId()), SIGKILL);
        orlo.process().waitForFinished(3000);
        EXPECT_EQ(gamma.read(), CrtcGamma::scaled(original, 0.5));
    }
    writeSettings(R"({"system.dimLevels": {"output-screen": 0.5}, "system.enabled": false})");
    OrloProcess again(session);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == original; })) << qPrintable(again.log());
    ASSERT_TRUE(again.waitForTray());
    EXPECT_EQ(gamma.read(), original);
    EXPECT_FALSE(QFile::exists(session.home() + "/.local/state/Orlo/dimmed-displays.json"));
}

TEST_F(SystemSession, KeyboardLockSwallowsEveryKeyAndEndsOnEscapeHoldOnDoneAndWithTheProcess)
{
    static const QString powerKeys = "handle-power-key:handle-suspend-key:handle-hibernate-key";
    FakeLogind logind(session);
    ASSERT_TRUE(logind.isRegistered());
    KeyListener window(session);
    OrloProcess orlo(session);
    openPanel(orlo);
    clickPanelSwitch(orlo, "keyboardCleaning");
    ASSERT_TRUE(orlo.waitForLine("keyboard locked")) << qPrintable(orlo.log());
    EXPECT_TRUE(VirtualSession::waitFor([&] { return logind.holds(powerKeys); })) << qPrintable(logind.events.join('\n'));
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Keyboard locked for cleaning$").isEmpty(); }));
    session.screenshot("system-keyboard-lock.png");
    // The window has the focus, so a key the lock let through would reach it.
    const QString windowId = window.seen.section("ready ", 1).section('\n', 0, 0).trimmed();
    session.run("xdotool", {"windowactivate", "--sync", windowId});
    session.run("xdotool", {"type", "--delay", "20", "abc"});
    session.run("xdotool", {"key", "XF86AudioMute", "XF86MonBrightnessDown", "Return"});

    // Escape held for three seconds unlocks.
    session.run("xdotool", {"keydown", "Escape"});
    EXPECT_TRUE(orlo.waitForLine("keyboard unlocked", 5000));
    session.run("xdotool", {"keyup", "Escape"});
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !logind.holds(powerKeys); }));
    // The first key the window receives is the one pressed after the lock: all before were
    // swallowed.
    session.run("xdotool", {"windowactivate", "--sync", windowId});
    session.run("xdotool", {"key", "F5"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return window.read().contains("key F5"); })) << qPrintable(window.seen);
    EXPECT_TRUE(window.seen.section("key ", 1).startsWith("F5")) << qPrintable(window.seen);

    // Again, and "Done" unlocks.
    openPanel(orlo);
    clickPanelSwitch(orlo, "keyboardCleaning");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo.log().count("keyboard locked") == 2; }))
        << qPrintable(orlo.log());
    const QPoint done = tracedPoint(orlo, "keyboard overlay Done", panelOpenedAt_);
    ASSERT_FALSE(done.isNull());
    session.click(done.x(), done.y());
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo.log().count("keyboard unlocked") == 2; }));

    // Locked, then killed outright: the X server drops the grab with Orlo's connection.
    openPanel(orlo);
    clickPanelSwitch(orlo, "keyboardCleaning");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo.log().count("keyboard locked") == 3; }));
    ASSERT_TRUE(VirtualSession::waitFor([&] { return logind.holds(powerKeys); }));
    ::kill(pid_t(orlo.process().processId()), SIGKILL);
    orlo.process().waitForFinished(3000);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !logind.holds(powerKeys); })) << qPrintable(logind.events.join('\n'));
    const QStringList ids = session.findWindows("^Keys$");
    ASSERT_FALSE(ids.isEmpty());
    session.run("xdotool", {"windowactivate", "--sync", ids.first()});
    session.run("xdotool", {"type", "--delay", "20", "xy"});
    EXPECT_TRUE(VirtualSession::waitFor([&] { return window.read().contains("text xy"); })) << qPrintable(window.seen);
}

TEST_F(SystemSession, PreventSleepKeepsTheScreenSaverOff)
{
    CrtcGamma x(session.display());
    session.run("xset", {"s", "1", "1"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return x.screenSaverOn(); }, 5000));
    OrloProcess orlo(session);
    openPanel(orlo);
    clickPanelSwitch(orlo, "preventSleep");
    ASSERT_TRUE(orlo.waitForLine("prevent sleep on")) << qPrintable(orlo.log());
    session.key("Escape");  // closes the panel; the last input before the idle wait
    ASSERT_TRUE(x.saverDelayPassed());
    EXPECT_FALSE(x.screenSaverOn());

    openPanel(orlo);
    clickPanelSwitch(orlo, "preventSleep");
    ASSERT_TRUE(orlo.waitForLine("prevent sleep off"));
    EXPECT_TRUE(VirtualSession::waitFor([&] { return x.screenSaverOn(); }, 5000));
}

// The desktop's screen saver service, the X server's own saver and logind's idle lock: each
// desktop heeds another, so Orlo holds all three, and each ends with Orlo, also when killed.
TEST_F(SystemSession, PreventSleepHoldsEveryWayOfSleepingBackAndEachEndsWithOrlo)
{
    QProcess* bus = session.launch("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
    QString address;
    ASSERT_TRUE(VirtualSession::waitFor([&] {
        address += QString::fromLocal8Bit(bus->readAllStandardOutput());
        return address.contains('\n');
    })) << qPrintable(QString::fromLocal8Bit(bus->readAllStandardError()));
    session.setVariable("DBUS_SESSION_BUS_ADDRESS", address.trimmed());
    QProcess* service = session.launch(VirtualSession::builtProgram("orlo-test-screensaver"), {});
    QString calls;
    auto read = [&] { return calls += QString::fromLocal8Bit(service->readAllStandardOutput()); };
    ASSERT_TRUE(VirtualSession::waitFor([&] { return read().contains("ready"); }));
    FakeLogind logind(session);
    ASSERT_TRUE(logind.isRegistered());

    CrtcGamma x(session.display());
    session.run("xset", {"s", "1", "1"});
    {
        OrloProcess orlo(session);
        openPanel(orlo);
        clickPanelSwitch(orlo, "preventSleep");
        ASSERT_TRUE(VirtualSession::waitFor([&] { return read().contains("inhibit Orlo Orlo: Prevent Sleep 41"); }))
            << qPrintable(calls) << qPrintable(orlo.log());
        EXPECT_TRUE(VirtualSession::waitFor([&] { return logind.holds("idle"); })) << qPrintable(logind.events.join('\n'));
        session.key("Escape");  // closes the panel; the last input before the idle wait
        ASSERT_TRUE(x.saverDelayPassed());
        EXPECT_FALSE(x.screenSaverOn());

        openPanel(orlo);
        clickPanelSwitch(orlo, "preventSleep");
        EXPECT_TRUE(VirtualSession::waitFor([&] { return read().contains("uninhibit 41"); })) << qPrintable(calls);
        EXPECT_TRUE(VirtualSession::waitFor([&] { return !logind.holds("idle"); }));
        session.key("Escape");
        EXPECT_TRUE(VirtualSession::waitFor([&] { return x.screenSaverOn(); }, 5000));
        VirtualSession::waitFor([] { return false; }, 400);  // a click right after closing does not reopen

        // Ended by a signal: the quit releases everything.
        openPanel(orlo);
        clickPanelSwitch(orlo, "preventSleep");
        ASSERT_TRUE(VirtualSession::waitFor([&] { return read().contains("Prevent Sleep 42") && logind.holds("idle"); }));
        ::kill(pid_t(orlo.process().processId()), SIGTERM);
        EXPECT_TRUE(orlo.process().waitForFinished(3000));
        EXPECT_TRUE(VirtualSession::waitFor([&] { return read().contains("uninhibit 42") || calls.contains("lost 42"); }));
        EXPECT_TRUE(VirtualSession::waitFor([&] { return !logind.holds("idle"); }));
    }
    // Killed outright: the service sees Orlo leave the bus, logind sees the lock's descriptor
    // close with the process, and the X server resumes its saver with the connection.
    OrloProcess orlo(session);
    openPanel(orlo);
    clickPanelSwitch(orlo, "preventSleep");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return read().contains("Prevent Sleep 43") && logind.holds("idle"); }));
    session.key("Escape");
    ASSERT_TRUE(x.saverDelayPassed());
    EXPECT_FALSE(x.screenSaverOn());
    ::kill(pid_t(orlo.process().processId()), SIGKILL);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return read().contains("lost 43"); })) << qPrintable(calls);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !logind.holds("idle"); })) << qPrintable(logind.events.join('\n'));
    EXPECT_TRUE(VirtualSession::waitFor([&] { return x.screenSaverOn(); }, 5000));
}

TEST_F(SystemSession, DimmingGoesOnTopOfAnotherProgramsTablesAndFollowsTheScreensBack)
{
    FakeLogind logind(session);
    ASSERT_TRUE(logind.isRegistered());
    CrtcGamma gamma(session.display());
    const Ramp original = gamma.setKnown();
    writeSettings(R"({"system.dimLevels": {"output-screen": 0.5}})");
    OrloProcess orlo(session);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(original, 0.5); })) << qPrintable(orlo.log());
    ASSERT_TRUE(orlo.waitForLine("watching login session")) << qPrintable(orlo.log());

    // Each time the screens come back, tables someone else wrote meanwhile (a night light, a
    // driver that reset them) become the display's own, and Orlo dims on top of them.
    const Ramp afterSleep = gamma.setKnown(0.8);
    logind.resumeFromSleep();
    EXPECT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(afterSleep, 0.5); }));
    const Ramp afterTerminal = gamma.setKnown(0.85);
    logind.activateSession();
    EXPECT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(afterTerminal, 0.5); }));
    const Ramp afterSaver = gamma.setKnown(0.95);
    session.run("xset", {"s", "activate"});
    session.run("xset", {"s", "reset"});
    EXPECT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(afterSaver, 0.5); }));

    ::kill(pid_t(orlo.process().processId()), SIGTERM);
    EXPECT_TRUE(orlo.process().waitForFinished(3000));
    EXPECT_EQ(gamma.read(), afterSaver);
}

TEST_F(SystemSession, TablesAnotherProgramWroteAreNeverWrittenOverAtQuitNorAfterACrash)
{
    CrtcGamma gamma(session.display());
    writeSettings(R"({"system.dimLevels": {"output-screen": 0.5}})");
    {
        const Ramp original = gamma.setKnown();
        OrloProcess orlo(session);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(original, 0.5); }));
        const Ramp nightLight = gamma.setKnown(0.8);
        ::kill(pid_t(orlo.process().processId()), SIGTERM);
        EXPECT_TRUE(orlo.process().waitForFinished(3000));
        EXPECT_EQ(gamma.read(), nightLight);
    }
    {
        const Ramp original = gamma.setKnown();
        OrloProcess orlo(session);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return gamma.read() == CrtcGamma::scaled(original, 0.5); }));
        ::kill(pid_t(orlo.process().processId()), SIGKILL);
        orlo.process().waitForFinished(3000);
    }
    const Ramp nightLight = gamma.setKnown(0.8);
    writeSettings(R"({"system.dimLevels": {"output-screen": 0.5}, "system.enabled": false})");
    OrloProcess again(session);
    ASSERT_TRUE(again.waitForTray());
    EXPECT_EQ(gamma.read(), nightLight);
    EXPECT_FALSE(QFile::exists(session.home() + "/.local/state/Orlo/dimmed-displays.json"));
}

TEST_F(SystemSession, MonitorListsABusyChildOfAnotherApplicationUnderThatApplication)
{
    // A shell under a name of its own, so that busy processes of other sessions on this
    // machine cannot be taken for it.
    const QString shell = session.home() + QStringLiteral("/busy-loop-%1").arg(QCoreApplication::applicationPid());
    ASSERT_TRUE(QFile::copy("/bin/sh", shell));
    session.launch("xterm", {"-title", "Busy", "-e", shell, "-c", "while :; do :; done"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Busy$").isEmpty(); }));
    OrloProcess orlo(session);
    // The first sample has no rates yet; the next ones name the busy shell under xterm.
    const QRegularExpression busy("busy (.+?) ([\\d.]+)% \\[([^\\]]*" + QRegularExpression::escape(QFileInfo(shell).fileName()) + "[^\\]]*)\\]");
    QRegularExpressionMatch match;
    // Figures are shares of the whole machine: one busy processor of n is 100/n %.
    const double oneProcessor = 100.0 / double(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
    ASSERT_TRUE(VirtualSession::waitFor([&] {
        auto all = busy.globalMatch(orlo.log());
        while (all.hasNext()) match = all.next();
        return match.hasMatch() && match.captured(2).toDouble() > 0.3 * oneProcessor;
    }, 25000)) << qPrintable(orlo.log());
    EXPECT_TRUE(match.captured(1).contains("xterm", Qt::CaseInsensitive)) << qPrintable(match.captured(1));
    EXPECT_LE(match.captured(2).toDouble(), 1.1 * oneProcessor);
    // xterm's processes, busiest first: the shell leads.
    const QStringList members = match.captured(3).split(' ');
    ASSERT_EQ(members.size(), 2) << qPrintable(match.captured(3));
    EXPECT_EQ(members.first(), QFileInfo(shell).fileName());
}

TEST_F(SystemSession, PanelRowsAndEverySystemTabAsTheUserSeesThem)
{
    QDir().mkpath(session.home() + "/.cache/thumbnails");
    QFile cache(session.home() + "/.cache/thumbnails/a.png");
    ASSERT_TRUE(cache.open(QIODevice::WriteOnly));
    cache.write(QByteArray(200000, 'x'));
    cache.close();
    session.launch("xterm", {"-title", "Busy", "-e", "sh", "-c", "while :; do :; done"});
    OrloProcess orlo(session);
    openPanel(orlo);
    ASSERT_FALSE(tracedPoint(orlo, "panel switch preventSleep", panelOpenedAt_).isNull());
    VirtualSession::waitFor([] { return false; }, 2500);  // a second sample fills the rings
    EXPECT_TRUE(session.screenshot("system-panel.png"));
    session.key("Escape");

    // A second start opens the settings, on the general page with the sidebar focused.
    session.run(VirtualSession::builtProgram("orlo"), {});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Settings$").isEmpty(); }));
    const qsizetype since = orlo.log().size();
    session.key("Down");
    for (const QString tab : {"Monitor", "Disk", "Displays", "Keyboard"}) {
        const QPoint at = tracedPoint(orlo, "system tab " + tab, since);
        ASSERT_FALSE(at.isNull()) << qPrintable(orlo.log());
        session.click(at.x(), at.y());
        VirtualSession::waitFor([] { return false; }, tab == "Monitor" ? 4000 : 1500);
        EXPECT_TRUE(session.screenshot("system-" + tab.toLower() + ".png"));
    }
}
