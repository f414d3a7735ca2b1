// Snapping latency: from the hot-key press to the window standing at its new frame, with
// Orlo (Control-Alt-Left and -Right in turn, pressed through XTEST) and, in the same session,
// the way a user scripts the same moves without Orlo: a key bound to a wmctrl command, which
// a hot-key daemon runs through sh -c as xbindkeys and sxhkd do (the benchmark is that daemon
// here). Also the bare cost of starting wmctrl per move, without key or shell, as a floor.
// Prints the median and 99th percentile of each and the ratios.
#include "VirtualSession.h"
#include "LatencyFigures.h"
#include "XWindowWatcher.h"
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRect>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::VirtualSession;

namespace {
constexpr int presses = 200;
}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    VirtualSession session;
    if (!session.start()) {
        fprintf(stderr, "bench: %s\n", qPrintable(session.error()));
        return 1;
    }
    OrloProcess orlo(session);
    if (!orlo.waitForLine("orlo.windows: hot keys: \\d+ registered", 10000)) {
        fprintf(stderr, "bench: Orlo did not take its hot keys\n%s\n", qPrintable(orlo.log()));
        return 1;
    }
    QProcess* target = session.launch(VirtualSession::builtProgram(QStringLiteral("orlo-test-window")),
                                      {QStringLiteral("Snap Bench")});
    QString ready;
    VirtualSession::waitFor([&] { return (ready += QString::fromLocal8Bit(target->readAllStandardOutput())).contains('\n'); });
    const QString id = ready.section(' ', 1).trimmed();
    if (id.isEmpty()) {
        fprintf(stderr, "bench: the test window did not start\n");
        return 1;
    }
    session.run(QStringLiteral("xdotool"), {QStringLiteral("windowactivate"), QStringLiteral("--sync"), id});

    XWindowWatcher watcher(session.display(), xcb_window_t(id.toULong()));
    const xcb_keycode_t control = watcher.keycode(0xffe3), alt = watcher.keycode(0xffe9);
    const xcb_keycode_t arrows[2] = {watcher.keycode(0xff51), watcher.keycode(0xff53)};  // Left, Right
    auto press = [&](xcb_keycode_t arrow, QElapsedTimer* clock) {
        watcher.key(control, true);
        watcher.key(alt, true);
        if (clock) clock->start();
        watcher.key(arrow, true);
    };
    auto release = [&](xcb_keycode_t arrow) {
        watcher.key(arrow, false);
        watcher.key(alt, false);
        watcher.key(control, false);
    };

    // Where each key puts the window: the left and the right half.
    QRect halves[2];
    for (int side : {0, 1}) {
        press(arrows[side], nullptr);
        release(arrows[side]);
        halves[side] = watcher.settle();
    }
    if (halves[0] == halves[1]) {
        fprintf(stderr, "bench: the hot keys did not move the window\n");
        return 1;
    }

    QList<double> withOrlo;
    for (int i = 0; i < presses; ++i) {
        const int side = i % 2 ? 1 : 0;
        QElapsedTimer clock;
        press(arrows[side], &clock);
        if (!watcher.waitFor(halves[side])) {
            fprintf(stderr, "bench: press %d did not snap the window\n", i);
            return 1;
        }
        withOrlo << clock.nsecsElapsed() / 1e6;
        release(arrows[side]);
    }

    // The scripted way. wmctrl's gravity 0 is the window's own, static for Qt windows: the
    // geometry given is the client's.
    auto wmctrlGeometry = [](const QRect& to) {
        return QStringLiteral("0,%1,%2,%3,%4").arg(to.x()).arg(to.y()).arg(to.width()).arg(to.height());
    };
    const xcb_keycode_t shift = watcher.keycode(0xffe1);
    const quint16 scriptKeys = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT;
    if (!watcher.grab(arrows[0], scriptKeys) || !watcher.grab(arrows[1], scriptKeys)) {
        fprintf(stderr, "bench: Control-Alt-Shift-arrows are taken\n");
        return 1;
    }
    QList<double> scripted, bare;
    for (int i = 0; i < presses; ++i) {
        const int side = i % 2 ? 0 : 1;
        watcher.key(shift, true);
        QElapsedTimer clock;
        press(arrows[side], &clock);
        if (!watcher.waitForKeyPress()) {
            fprintf(stderr, "bench: the script's key did not arrive\n");
            return 1;
        }
        QProcess script;
        script.setProcessEnvironment(session.environment());
        script.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("wmctrl -r :ACTIVE: -e ") + wmctrlGeometry(halves[side])});
        if (!watcher.waitFor(halves[side])) {
            fprintf(stderr, "bench: scripted move %d did not reach its frame\n", i);
            return 1;
        }
        scripted << clock.nsecsElapsed() / 1e6;
        release(arrows[side]);
        watcher.key(shift, false);
        script.waitForFinished(2000);
    }
    for (int i = 0; i < presses; ++i) {
        const int side = i % 2 ? 0 : 1;
        QElapsedTimer clock;
        clock.start();
        QProcess wmctrl;
        wmctrl.setProcessEnvironment(session.environment());
        wmctrl.start(QStringLiteral("wmctrl"), {QStringLiteral("-r"), QStringLiteral(":ACTIVE:"), QStringLiteral("-e"), wmctrlGeometry(halves[side])});
        if (!watcher.waitFor(halves[side])) {
            fprintf(stderr, "bench: wmctrl move %d did not reach its frame\n", i);
            return 1;
        }
        bare << clock.nsecsElapsed() / 1e6;
        wmctrl.waitForFinished(2000);
    }

    const LatencyFigures o = latencyFigures(withOrlo), s = latencyFigures(scripted), b = latencyFigures(bare);
    printf("snap, hot key to window at its new frame:       median %.2f ms, p99 %.2f ms over %d presses (goal: median 10 ms or less)\n",
           o.median, o.p99, presses);
    printf("snap, key bound to sh -c 'wmctrl -r :ACTIVE: -e': median %.2f ms, p99 %.2f ms over %d presses\n", s.median, s.p99, presses);
    printf("snap, wmctrl alone started per move (no key):    median %.2f ms, p99 %.2f ms over %d moves\n", b.median, b.p99, presses);
    printf("snap, Orlo is %.1f times faster than the scripted key (median; goal: 3 or more), %.1f times the bare wmctrl start\n",
           s.median / o.median, b.median / o.median);
    return 0;
}
