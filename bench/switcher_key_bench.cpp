// The switcher's key press to its first frame, under KWin on both of Linux's display servers,
// side by side in one run, with two windows open:
// - kwin_wayland --virtual: Alt+Tab typed through KWin's fake input (which KWin lets this
//   program use by a desktop entry, as it lets an installed Orlo), to KWin adding Orlo's
//   display window to its workspace, as a script of the benchmark's own reports it. KWin
//   adds a Wayland window once its surface has its first buffer, ready to be painted: that
//   is the first frame.
// - kwin_x11 on Xvfb: Alt down and Tab through XTEST to the first large paint on the screen
//   (DAMAGE), as orlo_bench_switcher measures it.
// A quick Alt+Tab switches to the other window at once; the next run waits for that.
// Prints the median and 99th percentile of each, and the ratio Wayland / X11.
#include "KWinFakeKeyboard.h"
#include "LatencyFigures.h"
#include "VirtualSession.h"
#include "WaylandSession.h"
#include "XScreenProbe.h"
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimer>
#include <cstdio>
#include <linux/input-event-codes.h>
#include <optional>

using orlo::testing::OrloProcess;
using orlo::testing::ProcessSession;
using orlo::testing::VirtualSession;
using orlo::testing::WaylandSession;

namespace {

int runs = 40;

// KWin's script calls Added with each new window of Orlo's, as KWin adds it.
class WindowReports : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.orlo.BenchReports")
public:
    int added = 0;
public slots:
    void Added() { ++added; }
};

const char* ReportScript = R"(
var orloPid = %1;
(workspace.windowAdded || workspace.clientAdded).connect(function (w) {
    if (w.pid === orloPid) callDBus("app.orlo.BenchReports", "/", "app.orlo.BenchReports", "Added");
});
)";

// Runs the event loop until the count passes `count`; false after 3 seconds.
bool waitForCount(const int& value, int count)
{
    QEventLoop loop;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        if (value > count) loop.quit();
    });
    tick.start(0);
    QTimer::singleShot(3000, &loop, &QEventLoop::quit);
    loop.exec();
    return value > count;
}

bool writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// Without a tray Orlo shows its settings window once, which would take the focus.
bool writeSettings(ProcessSession& session)
{
    return writeFile(session.configHome() + QStringLiteral("/Orlo/settings.json"), R"({"app.settingsShownWithoutTray": true})");
}

std::optional<QList<double>> onWayland()
{
    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    // Alt+Tab freed from KWin's own switcher, as the X11 session frees it.
    const bool freed = writeFile(kwin.configHome() + QStringLiteral("/kglobalshortcutsrc"),
                                 "[kwin]\nWalk Through Windows=none,Alt+Tab,Walk Through Windows\n");
    if (!freed || !writeSettings(kwin) || !kwin.start() || !kwin.showWindow(QStringLiteral("Bench A")) || !kwin.showWindow(QStringLiteral("Bench B")))
        return fprintf(stderr, "bench: kwin_wayland session: %s\n", qPrintable(kwin.error())), std::nullopt;
    OrloProcess orlo(kwin);
    if (!orlo.waitForLine(QStringLiteral("started: .* opens the switcher"), 10000))
        return fprintf(stderr, "bench: Orlo's switcher did not start on Wayland\n%s\n", qPrintable(orlo.log())), std::nullopt;

    QDBusConnection bus = kwin.connectToBus();
    WindowReports reports;
    if (!bus.registerService(QStringLiteral("app.orlo.BenchReports")) || !bus.registerObject(QStringLiteral("/"), &reports, QDBusConnection::ExportAllSlots)
        || !kwin.loadScript(QStringLiteral("orlo-bench-reports"), QByteArray(ReportScript).replace("%1", QByteArray::number(orlo.process().processId()))))
        return fprintf(stderr, "bench: KWin's reports cannot be had\n"), std::nullopt;

    QString error;
    const KWinFakeKeyboard keyboard = kwinFakeKeyboard(kwin, &error);
    if (!keyboard.keys) return fprintf(stderr, "bench: %s\n", qPrintable(error)), std::nullopt;

    QList<double> frames;
    static const QRegularExpression switched(QStringLiteral("switching to w"));
    for (int i = 0; i < runs; ++i) {
        const int before = reports.added;
        QElapsedTimer clock;
        clock.start();
        keyboard.keys->tap(KEY_TAB, orlo::wayland::EvdevKeySynth::Held::Alt);
        if (!waitForCount(reports.added, before))
            return fprintf(stderr, "bench: opening %d was not reported\n%s\n", i, qPrintable(orlo.log())), std::nullopt;
        frames << clock.nsecsElapsed() / 1e6;
        // The quick Alt+Tab switches once the display has the keyboard, and closes it.
        if (!WaylandSession::waitFor([&] { return orlo.log().count(switched) > i; }, 3000))
            return fprintf(stderr, "bench: opening %d did not switch\n%s\n", i, qPrintable(orlo.log())), std::nullopt;
    }
    return frames;
}

std::optional<QList<double>> onX11()
{
    VirtualSession session{QStringLiteral("kwin")};
    if (!writeSettings(session) || !session.freeSwitchingKeys() || !session.start())
        return fprintf(stderr, "bench: kwin_x11 session: %s\n", qPrintable(session.error())), std::nullopt;
    session.launch(VirtualSession::builtProgram(QStringLiteral("orlo-test-window")),
                   {QStringLiteral("Bench"), QStringLiteral("400"), QStringLiteral("300"), QStringLiteral("1")});
    if (!VirtualSession::waitFor([&] { return session.output(QStringLiteral("wmctrl"), {QStringLiteral("-l")}).count('\n') >= 2; }, 20000))
        return fprintf(stderr, "bench: the windows did not open\n"), std::nullopt;
    OrloProcess orlo(session);
    if (!orlo.waitForLine(QStringLiteral("orlo.switcher: started"), 10000))
        return fprintf(stderr, "bench: Orlo's switcher did not start on X11\n%s\n", qPrintable(orlo.log())), std::nullopt;
    XScreenProbe probe(session.display());
    const xcb_keycode_t alt = probe.keycode(0xffe9);
    QList<double> paints;
    for (int i = 0; i < runs; ++i) {
        // Orlo's trace is read as it comes, or a full pipe would stop it.
        orlo.process().waitForReadyRead(0);
        orlo.log();
        probe.settle();
        const xcb_window_t before = probe.active();
        const std::optional<double> paint = probe.altTabToPaint();
        probe.key(alt, false);
        if (!paint || !probe.waitForActiveChange(before))
            return fprintf(stderr, "bench: opening %d on X11 %s\n", i, paint ? "did not switch" : "painted nothing"), std::nullopt;
        paints << *paint;
    }
    return paints;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc > 1) runs = std::max(1, atoi(argv[1]));
    const std::optional<QList<double>> wayland = onWayland();
    if (!wayland) return 1;
    const std::optional<QList<double>> x11 = onX11();
    if (!x11) return 1;
    const LatencyFigures w = latencyFigures(*wayland), x = latencyFigures(*x11);
    printf("switcher, Alt+Tab press to the display's first frame, over %d runs each:\n", runs);
    printf("  kwin_wayland (fake input to KWin adding the window): median %.2f ms, p99 %.2f ms\n", w.median, w.p99);
    printf("  kwin_x11 on Xvfb (XTEST to the first paint):         median %.2f ms, p99 %.2f ms\n", x.median, x.p99);
    printf("  Wayland / X11: %.2f (median), %.2f (p99)\n", w.median / x.median, w.p99 / x.p99);
    return 0;
}

#include "switcher_key_bench.moc"
