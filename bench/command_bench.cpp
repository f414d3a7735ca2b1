// Orlo's command line under KWin on both of Linux's display servers, side by side in one run:
// kwin_wayland --virtual (Orlo's Wayland backend, its script inside KWin) and kwin_x11 on
// Xvfb (the X11 backend). Timed from starting the command:
// - `orlo snap left-half` and `right-half` in turn, to the window standing at its new frame
//   as the display server reports it (KWin's report through a watching script of the
//   benchmark's own on Wayland, the window's geometry on X11);
// - `orlo switcher`, to Orlo's log line that it opened the switcher's display; the display
//   is then closed (Escape on X11; on KWin, where no key can be typed, by activating the
//   window behind it).
// - Orlo's hot keys for the same halves (Control+Alt+Left and Right), typed through KWin's fake
//   input on Wayland (KWin lets this program use it by a desktop entry, as it lets an
//   installed Orlo) and through XTEST on X11, to the window at its new frame.
// Prints the median and 99th percentile of each, and the ratio Wayland / X11.
#include "KWinFakeKeyboard.h"
#include "KWinReportWait.h"
#include "LatencyFigures.h"
#include "VirtualSession.h"
#include "WaylandSession.h"
#include "XTestKeyboard.h"
#include "XWindowWatcher.h"
#include "platform/wayland/kwin/KWinPorts.h"
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <X11/keysym.h>
#include <linux/input-event-codes.h>

using namespace orlo;
using orlo::testing::OrloProcess;
using orlo::testing::ProcessSession;
using orlo::testing::VirtualSession;
using orlo::testing::WaylandSession;

namespace {

int runs = 40;
const QStringList snaps{QStringLiteral("left-half"), QStringLiteral("right-half")};

struct Timings {
    QList<double> snap, snapKey, switcher;
};

// Orlo's hot keys for the halves, Control+Alt+Left and Right, in a display server's key codes;
// press sends one key going down or up at once.
struct SnapKeys {
    std::function<void(quint32 code, bool down)> press;
    quint32 control, alt, left, right;
};

// Types the hot keys for the halves in turn, starting with the half the window does not stand
// in, each timed from the arrow's press to the window at its frame (`reached`).
bool timeSnapKeys(const SnapKeys& keys, int standsIn, const std::function<bool(int half)>& reached, QList<double>& out)
{
    for (int i = 0; i < runs; ++i) {
        const int half = (standsIn + 1 + i) % 2;
        const quint32 arrow = half == 0 ? keys.left : keys.right;
        keys.press(keys.control, true);
        keys.press(keys.alt, true);
        QElapsedTimer clock;
        clock.start();
        keys.press(arrow, true);
        keys.press(arrow, false);
        keys.press(keys.alt, false);
        keys.press(keys.control, false);
        if (!reached(half)) return fprintf(stderr, "bench: snap key %d did not reach its frame\n", i), false;
        out << clock.nsecsElapsed() / 1e6;
    }
    return true;
}

// Runs the event loop until Orlo's log has `count` lines matching; false after 3 seconds.
bool waitForLines(OrloProcess& orlo, const QRegularExpression& line, qsizetype count)
{
    auto enough = [&] { return orlo.log().count(line) >= count; };
    if (enough()) return true;
    QEventLoop loop;
    QObject::connect(&orlo.process(), &QProcess::readyRead, &loop, [&] {
        if (enough()) loop.quit();
    });
    QTimer::singleShot(3000, &loop, &QEventLoop::quit);
    loop.exec();
    return enough();
}

// `orlo ARGS` started in the session; the clock starts with it.
QProcess* command(ProcessSession& session, const QStringList& args, QElapsedTimer& clock)
{
    clock.start();
    return session.launch(ProcessSession::builtProgram(QStringLiteral("orlo")), args);
}

// Opens the switcher by its command `runs` times, closing it after each with `close`, which
// is given the number of the opening.
bool timeSwitcher(ProcessSession& session, OrloProcess& orlo, const std::function<bool(int)>& close, QList<double>& out)
{
    static const QRegularExpression opened(QStringLiteral("opened at .* with \\d+ items"));
    static const QRegularExpression closed(QStringLiteral("orlo.switcher: cancelled"));
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        QProcess* switcher = command(session, {QStringLiteral("switcher")}, clock);
        if (!waitForLines(orlo, opened, i + 1)) return fprintf(stderr, "bench: switcher %d did not open\n%s\n", i, qPrintable(orlo.log())), false;
        out << clock.nsecsElapsed() / 1e6;
        switcher->waitForFinished(3000);
        if (!close(i + 1)) return fprintf(stderr, "bench: switcher %d could not be closed\n%s\n", i, qPrintable(orlo.log())), false;
        if (!waitForLines(orlo, closed, i + 1)) return fprintf(stderr, "bench: switcher %d did not close\n%s\n", i, qPrintable(orlo.log())), false;
    }
    return true;
}

bool writeSettings(ProcessSession& session)
{
    // Without a tray Orlo shows its settings window once, which would take the focus.
    QFile file(session.configHome() + QStringLiteral("/Orlo/settings.json"));
    return QDir().mkpath(session.configHome() + QStringLiteral("/Orlo")) && file.open(QIODevice::WriteOnly)
           && file.write(R"({"app.settingsShownWithoutTray": true})") > 0;
}

std::optional<Timings> onWayland()
{
    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    if (!writeSettings(kwin) || !kwin.start() || !kwin.showWindow(QStringLiteral("Bench")))
        return fprintf(stderr, "bench: kwin_wayland session: %s\n", qPrintable(kwin.error())), std::nullopt;
    QDBusConnection bus = kwin.connectToBus();
    QString error;
    auto watcher = kwin::KWinPorts::start(bus, &error, QStringLiteral("orlo-bench-watcher"));
    if (!watcher) return fprintf(stderr, "bench: %s\n", qPrintable(error)), std::nullopt;
    kwin::KWinDesktop& desktop = watcher->desktop();
    const kwin::KWinWindow* window = nullptr;
    WaylandSession::waitFor([&] { return (window = desktop.activeWindow()) && window->title == QLatin1String("Bench"); });
    if (!window || desktop.screens().isEmpty()) return fprintf(stderr, "bench: KWin reports no window\n"), std::nullopt;
    const WindowId id = desktop.idOf(*window);
    OrloProcess orlo(kwin);
    if (!orlo.waitForLine(QStringLiteral("started: .* opens the switcher|is held by another program"), 10000))
        return fprintf(stderr, "bench: Orlo did not start on Wayland\n%s\n", qPrintable(orlo.log())), std::nullopt;

    const QRectF work = desktop.screens()[0].workArea;
    const QRectF halves[2] = {QRectF(work.x(), work.y(), work.width() / 2, work.height()),
                              QRectF(work.x() + work.width() / 2, work.y(), work.width() / 2, work.height())};
    Timings t;
    for (int i = 0; i < runs + 1; ++i) {
        QElapsedTimer clock;
        QProcess* snap = command(kwin, {QStringLiteral("snap"), snaps[i % 2]}, clock);
        if (!waitForReport(desktop, id, halves[i % 2]))
            return fprintf(stderr, "bench: snap %d was not reported\n%s\n", i, qPrintable(orlo.log())), std::nullopt;
        // The first puts the window in place from wherever KWin opened it.
        if (i > 0) t.snap << clock.nsecsElapsed() / 1e6;
        snap->waitForFinished(3000);
    }
    const KWinFakeKeyboard keyboard = kwinFakeKeyboard(kwin, &error);
    if (!keyboard.keys) return fprintf(stderr, "bench: %s\n", qPrintable(error)), std::nullopt;
    const SnapKeys keys{[&](quint32 code, bool down) { keyboard.keys->setKey(code, down, wayland::EvdevKeySynth::Held::Nothing, wayland::EvdevKeySynth::Held::Nothing); },
                        KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFT, KEY_RIGHT};
    if (!timeSnapKeys(keys, runs % 2, [&](int half) { return waitForReport(desktop, id, halves[half]); }, t.snapKey)) return std::nullopt;
    // The display takes the keyboard a little after it is shown; only then can leaving it close it.
    const QRegularExpression focused(QStringLiteral("the display has the keyboard"));
    auto close = [&](int opening) {
        if (!waitForLines(orlo, focused, opening)) return false;
        desktop.activate(id, false);
        return true;
    };
    if (!timeSwitcher(kwin, orlo, close, t.switcher)) return std::nullopt;
    return t;
}

std::optional<Timings> onX11()
{
    VirtualSession session{QStringLiteral("kwin")};
    if (!session.start()) return fprintf(stderr, "bench: kwin_x11 session: %s\n", qPrintable(session.error())), std::nullopt;
    OrloProcess orlo(session);
    if (!orlo.waitForLine(QStringLiteral("orlo.windows: hot keys: \\d+ registered"), 10000))
        return fprintf(stderr, "bench: Orlo did not start on X11\n%s\n", qPrintable(orlo.log())), std::nullopt;
    QProcess* target = session.launch(VirtualSession::builtProgram(QStringLiteral("orlo-test-window")), {QStringLiteral("Bench")});
    QString ready;
    VirtualSession::waitFor([&] { return (ready += QString::fromLocal8Bit(target->readAllStandardOutput())).contains('\n'); });
    const QString windowId = ready.section(' ', 1).trimmed();
    if (windowId.isEmpty()) return fprintf(stderr, "bench: the window did not start\n"), std::nullopt;
    session.run(QStringLiteral("xdotool"), {QStringLiteral("windowactivate"), QStringLiteral("--sync"), windowId});
    XWindowWatcher watcher(session.display(), xcb_window_t(windowId.toULong()));

    // Where each command puts the window, as kwin_x11 lays it out.
    QRect halves[2];
    for (int side : {0, 1}) {
        QElapsedTimer unused;
        command(session, {QStringLiteral("snap"), snaps[side]}, unused)->waitForFinished(3000);
        halves[side] = watcher.settle();
    }
    if (halves[0] == halves[1]) return fprintf(stderr, "bench: the snap commands did not move the window\n"), std::nullopt;
    Timings t;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        QProcess* snap = command(session, {QStringLiteral("snap"), snaps[i % 2]}, clock);
        if (!watcher.waitFor(halves[i % 2])) return fprintf(stderr, "bench: snap %d did not reach its frame\n", i), std::nullopt;
        t.snap << clock.nsecsElapsed() / 1e6;
        snap->waitForFinished(3000);
    }
    XTestKeyboard xtest(session.display());
    const SnapKeys keys{[&](quint32 code, bool down) { xtest.key(xcb_keycode_t(code), down); }, xtest.keycode(XK_Control_L),
                        xtest.keycode(XK_Alt_L), xtest.keycode(XK_Left), xtest.keycode(XK_Right)};
    if (!timeSnapKeys(keys, (runs - 1) % 2, [&](int half) { return watcher.waitFor(halves[half]); }, t.snapKey)) return std::nullopt;
    auto close = [&](int) {
        session.key(QStringLiteral("Escape"));
        return true;
    };
    if (!timeSwitcher(session, orlo, close, t.switcher)) return std::nullopt;
    return t;
}

void print(const char* what, const QList<double>& wayland, const QList<double>& x11)
{
    const LatencyFigures w = latencyFigures(wayland), x = latencyFigures(x11);
    printf("%s over %lld runs each:\n", what, static_cast<long long>(wayland.size()));
    printf("  kwin_wayland (Wayland backend): median %.2f ms, p99 %.2f ms\n", w.median, w.p99);
    printf("  kwin_x11 on Xvfb (X11 backend): median %.2f ms, p99 %.2f ms\n", x.median, x.p99);
    printf("  Wayland / X11: %.2f (median), %.2f (p99)\n", w.median / x.median, w.p99 / x.p99);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc > 1) runs = std::max(1, atoi(argv[1]));
    const std::optional<Timings> wayland = onWayland();
    if (!wayland) return 1;
    const std::optional<Timings> x11 = onX11();
    if (!x11) return 1;
    print("orlo snap, command to the window at its new frame", wayland->snap, x11->snap);
    print("snap hot key (Control+Alt+arrow) to the window at its new frame", wayland->snapKey, x11->snapKey);
    print("orlo switcher, command to Orlo opening its display", wayland->switcher, x11->switcher);
    return 0;
}
