// How fast Orlo's requests reach its script inside KWin (kwin_wayland --virtual, two screens):
// from asking for a new frame to KWin reporting the window there, the way Orlo does it (the
// script's held "Next" call is answered with the request) beside the other way a program can
// reach KWin, loading a small script per request that moves the window and is unloaded again.
// A window alternates between the halves of the right screen's work area. Prints the median
// and 99th percentile of each.
#include "KWinReportWait.h"
#include "LatencyFigures.h"
#include "WaylandSession.h"
#include "VirtualSession.h"
#include "platform/wayland/kwin/KWinPorts.h"
#include <QCoreApplication>
#include <QDBusReply>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

using namespace orlo;
using orlo::testing::WaylandSession;
using orlo::testing::VirtualSession;

namespace {

constexpr int moves = 100;

QDBusMessage scripting(QDBusConnection& bus, const QString& method, const QVariantList& args)
{
    QDBusMessage call = QDBusMessage::createMethodCall("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting", method);
    call.setArguments(args);
    return bus.call(call);
}

// One request as a script of its own: written, loaded, run, and unloaded once it took effect.
bool moveByLoadingAScript(QDBusConnection& bus, const QString& folder, const QString& kwinId, const QRectF& frame,
                          kwin::KWinDesktop& desktop, WindowId id)
{
    const QString path = folder + "/move.js";
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(QStringLiteral("workspace.clientList().forEach(function (w) { if (String(w.internalId) === \"%1\") "
                              "w.frameGeometry = {x: %2, y: %3, width: %4, height: %5}; });")
                   .arg(kwinId).arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height())
                   .toUtf8());
    file.close();
    const QDBusReply<int> script = scripting(bus, "loadScript", {path, QStringLiteral("orlo-bench-move")});
    if (!script.isValid() || script.value() < 0) return false;
    bus.call(QDBusMessage::createMethodCall("org.kde.KWin", QStringLiteral("/%1").arg(script.value()), "org.kde.kwin.Script", "run"));
    const bool moved = waitForReport(desktop, id, frame);
    scripting(bus, "unloadScript", {QStringLiteral("orlo-bench-move")});
    return moved;
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    if (!kwin.start() || !kwin.showWindow("Bench")) {
        fprintf(stderr, "kwin_wayland session: %s\n", qPrintable(kwin.error()));
        return 1;
    }
    QDBusConnection bus = kwin.connectToBus();
    QString error;
    auto ports = kwin::KWinPorts::start(bus, &error);
    if (!ports) {
        fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    kwin::KWinDesktop& desktop = ports->desktop();
    const kwin::KWinWindow* window = nullptr;
    VirtualSession::waitFor([&] { return (window = desktop.topFirst().value(0)) != nullptr; });
    const QList<kwin::KWinScreen> screens = desktop.screens();
    if (!window || screens.size() < 2) {
        fprintf(stderr, "no window or not two screens\n");
        return 1;
    }
    const WindowId id = desktop.idOf(*window);
    const QString kwinId = window->id;
    const QRectF work = screens[1].workArea;
    const QRectF halves[2] = {QRectF(work.x(), work.y(), work.width() / 2, work.height()),
                              QRectF(work.x() + work.width() / 2, work.y(), work.width() / 2, work.height())};

    QList<double> held, loaded;
    QElapsedTimer clock;
    for (int i = 0; i < moves; ++i) {
        const QRectF target = halves[i % 2];
        clock.start();
        desktop.setFrame(id, target);
        if (!waitForReport(desktop, id, target)) return fprintf(stderr, "move %d was not reported\n", i), 1;
        held << clock.nsecsElapsed() / 1e6;
    }
    QTemporaryDir folder;
    for (int i = 0; i < moves; ++i) {
        const QRectF target = halves[i % 2];
        clock.start();
        if (!moveByLoadingAScript(bus, folder.path(), kwinId, target, desktop, id))
            return fprintf(stderr, "scripted move %d did not happen\n", i), 1;
        loaded << clock.nsecsElapsed() / 1e6;
    }
    const LatencyFigures a = latencyFigures(held), b = latencyFigures(loaded);
    printf("kwin_wayland, request to reported frame, %d moves:\n", moves);
    printf("  Orlo's held call:        median %.2f ms, p99 %.2f ms\n", a.median, a.p99);
    printf("  a script per request:    median %.2f ms, p99 %.2f ms\n", b.median, b.p99);
    return 0;
}
