// Switcher latency with 50 windows of another process open: from the Tab press (XTEST, Alt
// held) to the first paint of the switcher on the screen, and from the Alt release to the
// chosen window being the active one. Measured in the same session for Orlo, for alttab, and
// for rofi's window mode started by a key binding (the benchmark is the hot-key daemon that
// starts it, as xbindkeys or sxhkd would). A paint is the first screen damage at least
// 150x60 pixels large after the press, seen through the DAMAGE extension on the root window.
#include "VirtualSession.h"
#include "XScreenProbe.h"
#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <poll.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

using orlo::testing::OrloProcess;
using orlo::testing::VirtualSession;

namespace {

int openings = 120;

using Probe = XScreenProbe;

struct Figures {
    double median = 0, p99 = 0;
};

Figures figures(QList<double> ms)
{
    std::sort(ms.begin(), ms.end());
    const int n = int(ms.size());
    if (n == 0) return {};
    return {n % 2 ? ms[n / 2] : (ms[n / 2 - 1] + ms[n / 2]) / 2, ms[std::max(0, int(std::ceil(0.99 * n)) - 1)]};
}

struct Result {
    QString name;
    Figures paint, activation;
    int done = 0;
};

// One switcher, opened and used again and again: Alt down, Tab tapped, wait for the paint,
// Alt up, wait for another window to become active. `onTab` runs right after the Tab press
// (the hot-key daemon's part, for a switcher that is started by a key); `between` runs
// between two openings.
Result measure(const QString& name, Probe& probe, const std::function<void()>& onTab = {}, const std::function<void()>& between = {})
{
    const xcb_keycode_t alt = probe.keycode(0xffe9);
    QList<double> paints, activations;
    for (int i = 0; i < openings; ++i) {
        if (between) between();
        probe.settle();
        const xcb_window_t before = probe.active();
        const std::optional<double> paintMs = probe.altTabToPaint(onTab);
        const bool painted = paintMs.has_value();
        const double paint = paintMs.value_or(0);
        QElapsedTimer clock;
        clock.start();
        probe.key(alt, false);
        const bool switched = probe.waitForActiveChange(before);
        const double activation = clock.nsecsElapsed() / 1e6;
        if (!painted || !switched) {
            fprintf(stderr, "bench: %s opening %d: %s\n", qPrintable(name), i, painted ? "no window became active" : "nothing was painted");
            probe.key(probe.keycode(0xff1b), true);
            probe.key(probe.keycode(0xff1b), false);
            continue;
        }
        paints << paint;
        activations << activation;
    }
    return {name, figures(paints), figures(activations), int(paints.size())};
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc > 1) openings = std::max(1, atoi(argv[1]));
    VirtualSession session;
    if (!session.start()) {
        fprintf(stderr, "bench: %s\n", qPrintable(session.error()));
        return 1;
    }
    // 50 windows of another process.
    QProcess* windows = session.launch(VirtualSession::builtProgram(QStringLiteral("orlo-test-window")),
                                       {QStringLiteral("Bench"), QStringLiteral("400"), QStringLiteral("300"), QStringLiteral("49")});
    if (!VirtualSession::waitFor([&] { return session.output(QStringLiteral("wmctrl"), {QStringLiteral("-l")}).count('\n') >= 49; }, 20000)) {
        fprintf(stderr, "bench: the 50 windows did not open\n");
        return 1;
    }
    Q_UNUSED(windows);
    Probe probe(session.display());
    QList<Result> results;

    {
        OrloProcess orlo(session);
        if (!orlo.waitForLine(QStringLiteral("orlo.switcher: started"), 10000)) {
            fprintf(stderr, "bench: Orlo's switcher did not start\n%s\n", qPrintable(orlo.log()));
            return 1;
        }
        // Orlo's trace is read as it comes, or a full pipe would stop it.
        results << measure(QStringLiteral("Orlo"), probe, {}, [&] {
            orlo.process().waitForReadyRead(0);
            orlo.log();
        });
        if (results.last().done < openings) fprintf(stderr, "bench: Orlo's log:\n%s\n", qPrintable(orlo.log().right(3000)));
    }

    {
        QProcess* alttab = session.launch(QStringLiteral("alttab"), {QStringLiteral("-w"), QStringLiteral("1")});
        // Ready once it holds Alt+Tab.
        const xcb_keycode_t tab = probe.keycode(0xff09);
        VirtualSession::waitFor([&] {
            if (!probe.grab(tab, XCB_MOD_MASK_1)) return true;
            probe.ungrab(tab, XCB_MOD_MASK_1);
            return false;
        }, 10000);
        results << measure(QStringLiteral("alttab"), probe);
        alttab->terminate();
        alttab->waitForFinished(2000);
    }
    VirtualSession::waitFor([&] { return false; }, 300);

    {
        const xcb_keycode_t tab = probe.keycode(0xff09);
        if (!probe.grab(tab, XCB_MOD_MASK_1)) {
            fprintf(stderr, "bench: Alt+Tab is still taken\n");
            return 1;
        }
        QList<QProcess*> started;
        results << measure(QStringLiteral("rofi -show window"), probe, [&] {
            if (!probe.waitForKeyPress()) return;
            auto* rofi = new QProcess;
            rofi->setProcessEnvironment(session.environment());
            rofi->start(QStringLiteral("rofi"), {QStringLiteral("-show"), QStringLiteral("window"), QStringLiteral("-selected-row"), QStringLiteral("1"),
                                                 QStringLiteral("-kb-accept-entry"), QStringLiteral("!Alt+Alt_L,!Alt_L,Return"),
                                                 QStringLiteral("-kb-row-down"), QStringLiteral("Alt+Tab,Down")});
            started << rofi;
        });
        for (QProcess* rofi : started) {
            rofi->waitForFinished(2000);
            delete rofi;
        }
    }

    const Result& orlo = results[0];
    printf("switcher with 50 windows, %d openings each; Tab press to first paint, Alt release to the window active:\n", openings);
    for (const Result& r : results)
        printf("  %-18s paint median %6.2f ms, p99 %6.2f ms; activation median %6.2f ms, p99 %6.2f ms (%d of %d openings)\n",
               qPrintable(r.name), r.paint.median, r.paint.p99, r.activation.median, r.activation.p99, r.done, openings);
    for (int i = 1; i < results.size(); ++i)
        printf("  %s / Orlo: paint median %.1fx, p99 %.1fx; activation median %.1fx\n", qPrintable(results[i].name),
               results[i].paint.median / orlo.paint.median, results[i].paint.p99 / orlo.paint.p99,
               results[i].activation.median / orlo.activation.median);
    printf("  goals: paint median 8 ms or less, p99 16 ms or less; activation 33 ms or less; faster than both peers\n");
    return 0;
}
