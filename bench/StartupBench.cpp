// Orlo's start-up and idle cost: time from process start to the tray icon being shown,
// and CPU use over idle seconds with every module on. Prints each figure.
#include "VirtualSession.h"
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <algorithm>
#include <unistd.h>

using orlo::testing::VirtualSession;

static double cpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return -1;
    const QByteArray text = stat.readAll();
    // Fields after the parenthesised command name: state is field 3, utime 14, stime 15.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return double(fields.value(11).toLongLong() + fields.value(12).toLongLong()) / double(sysconf(_SC_CLK_TCK));
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    VirtualSession session;
    if (!session.start()) {
        fprintf(stderr, "bench: %s\n", qPrintable(session.error()));
        return 1;
    }
    QProcessEnvironment env = session.environment();
    env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("orlo.startup.debug=true"));
    const QString orlo = VirtualSession::builtProgram(QStringLiteral("orlo"));

    QList<double> startups;
    for (int run = 0; run < 10; ++run) {
        QElapsedTimer clock;
        clock.start();
        QProcess* p = session.launch(orlo, {}, env, QProcess::MergedChannels);
        QByteArray out;
        const bool shown = VirtualSession::waitFor([&] { return (out += p->readAll()).contains("tray icon shown"); }, 10000);
        const double ms = clock.nsecsElapsed() / 1e6;
        p->terminate();
        p->waitForFinished(3000);
        if (!shown) {
            fprintf(stderr, "bench: the tray icon did not appear\n%s\n", out.constData());
            return 1;
        }
        startups << ms;
    }
    std::sort(startups.begin(), startups.end());
    printf("startup to tray icon: median %.0f ms, best %.0f ms, worst %.0f ms over %lld starts (goal: 300 ms or less)\n",
           startups[startups.size() / 2], startups.first(), startups.last(), qlonglong(startups.size()));

    const int idleSeconds = qEnvironmentVariableIntValue("ORLO_BENCH_IDLE_SECONDS") > 0
        ? qEnvironmentVariableIntValue("ORLO_BENCH_IDLE_SECONDS") : 60;
    QProcess* p = session.launch(orlo, {}, env, QProcess::MergedChannels);
    VirtualSession::waitFor([&] { return p->readAll().contains("tray icon shown"); }, 10000);
    VirtualSession::waitFor([] { return false; }, 3000);  // let start-up settle
    const double before = cpuSeconds(p->processId());
    sleep(idleSeconds);
    const double used = cpuSeconds(p->processId()) - before;
    printf("idle CPU with all four modules on: %.3f%% of one core over %d s (%.0f ms of CPU; goal: 0.1%% or less)\n",
           100.0 * used / idleSeconds, idleSeconds, used * 1000);
    return 0;
}
