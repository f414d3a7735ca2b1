// Switcher latency with 50 windows of another process open: from the Tab press (XTEST, Alt
// held) to the first paint of the switcher on the screen, and from the Alt release to the
// chosen window being the active one. Measured in the same session for Orlo, for alttab, and
// for rofi's window mode started by a key binding (the benchmark is the hot-key daemon that
// starts it, as xbindkeys or sxhkd would). A paint is the first screen damage at least
// 150x60 pixels large after the press, seen through the DAMAGE extension on the root window.
#include "VirtualSession.h"
#include "XTestKeyboard.h"
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
constexpr int timeoutMs = 3000;

// Watches the screen and the active window from a connection of its own, and presses keys.
class Probe : public XTestKeyboard {
public:
    explicit Probe(const QString& display) : XTestKeyboard(display)
    {
        const quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(c_, root_, XCB_CW_EVENT_MASK, &mask);
        auto* version = xcb_damage_query_version_reply(c_, xcb_damage_query_version(c_, 1, 1), nullptr);
        free(version);
        damageEvent_ = xcb_get_extension_data(c_, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
        const xcb_damage_damage_t damage = xcb_generate_id(c_);
        xcb_damage_create(c_, damage, root_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        auto* atom = xcb_intern_atom_reply(c_, xcb_intern_atom(c_, 0, 18, "_NET_ACTIVE_WINDOW"), nullptr);
        activeAtom_ = atom ? atom->atom : XCB_NONE;
        free(atom);
        xcb_flush(c_);
    }
    xcb_window_t active()
    {
        auto* reply = xcb_get_property_reply(c_, xcb_get_property(c_, 0, root_, activeAtom_, XCB_ATOM_WINDOW, 0, 1), nullptr);
        xcb_window_t w = reply && xcb_get_property_value_length(reply) == 4 ? *static_cast<xcb_window_t*>(xcb_get_property_value(reply)) : 0;
        free(reply);
        return w;
    }
    // Drops every event that has arrived, after the screen has been still for a while.
    void settle(int quietMs = 60)
    {
        QElapsedTimer quiet;
        quiet.start();
        while (quiet.elapsed() < quietMs) {
            if (next(5)) quiet.restart();
        }
    }
    // Sleeps until a large damage rectangle, a grabbed key press or an active-window change
    // arrives (whichever is asked for); false on time-out.
    bool waitForPaint() { return waitFor([this](xcb_generic_event_t* e) { return isLargeDamage(e); }); }
    bool waitForKeyPress() { return waitFor([](xcb_generic_event_t* e) { return (e->response_type & 0x7f) == XCB_KEY_PRESS; }); }
    bool waitForActiveChange(xcb_window_t from)
    {
        return waitFor([&](xcb_generic_event_t* e) {
            if ((e->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
            auto* p = reinterpret_cast<xcb_property_notify_event_t*>(e);
            return p->atom == activeAtom_ && active() != from && active() != XCB_NONE;
        });
    }

private:
    bool isLargeDamage(xcb_generic_event_t* e) const
    {
        if ((e->response_type & 0x7f) != damageEvent_) return false;
        auto* d = reinterpret_cast<xcb_damage_notify_event_t*>(e);
        return d->area.width >= 150 && d->area.height >= 60;
    }
    template <typename Test> bool waitFor(Test test)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs) {
            xcb_generic_event_t* e = next(int(std::max<qint64>(1, timeoutMs - clock.elapsed())));
            if (!e) continue;
            const bool hit = test(e);
            free(e);
            if (hit) return true;
        }
        return false;
    }
    xcb_generic_event_t* next(int waitMs)
    {
        if (xcb_generic_event_t* e = xcb_poll_for_event(c_)) return e;
        pollfd fd{xcb_get_file_descriptor(c_), POLLIN, 0};
        poll(&fd, 1, waitMs);
        return xcb_poll_for_event(c_);
    }

    xcb_atom_t activeAtom_;
    quint8 damageEvent_ = 0;
};

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
    const xcb_keycode_t alt = probe.keycode(0xffe9), tab = probe.keycode(0xff09);
    QList<double> paints, activations;
    for (int i = 0; i < openings; ++i) {
        if (between) between();
        probe.settle();
        const xcb_window_t before = probe.active();
        QElapsedTimer clock;
        probe.key(alt, true);
        clock.start();
        probe.key(tab, true);
        if (onTab) onTab();
        probe.key(tab, false);
        const bool painted = probe.waitForPaint();
        const double paint = clock.nsecsElapsed() / 1e6;
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
