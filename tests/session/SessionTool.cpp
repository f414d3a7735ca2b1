// orlo-session: a private virtual X session for trying Orlo without a desktop.
// Usage: orlo-session PROGRAM [ARGS...]   runs PROGRAM in the session until it ends or Ctrl+C.
#include "VirtualSession.h"
#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

static int stopPipe[2];

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        fprintf(stderr, "usage: orlo-session PROGRAM [ARGS...]\n");
        return 2;
    }
    orlo::testing::VirtualSession session;
    if (!session.start()) {
        fprintf(stderr, "orlo-session: %s\n", qPrintable(session.error()));
        return 1;
    }
    printf("Virtual X session on DISPLAY=%s (1440x900 and 3440x1440 monitors, openbox, tray).\n"
           "Take a screenshot:   DISPLAY=%s import -window root shot.png\n"
           "Press keys:          DISPLAY=%s xdotool key ctrl+alt+Left\n"
           "Stop with Ctrl+C.\n",
           qPrintable(session.display()), qPrintable(session.display()), qPrintable(session.display()));
    fflush(stdout);

    const QFileInfo given(args.first());
    const QString path = given.exists() ? given.absoluteFilePath() : args.first();
    QProcess* program = session.launch(path, args.mid(1), {}, QProcess::ForwardedChannels);
    QObject::connect(program, &QProcess::finished, &app, [&](int code) { app.exit(code); });

    socketpair(AF_UNIX, SOCK_STREAM, 0, stopPipe);
    auto onSignal = +[](int) { [[maybe_unused]] auto n = write(stopPipe[1], "x", 1); };
    signal(SIGINT, onSignal);
    signal(SIGTERM, onSignal);
    QSocketNotifier notifier(stopPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &app, [&] { app.exit(0); });
    const int code = app.exec();
    session.stop();
    return code;
}
