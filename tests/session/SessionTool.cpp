// orlo-session: a private virtual X session for trying Orlo without a desktop.
// Usage: orlo-session [--wm NAME] PROGRAM [ARGS...]   runs PROGRAM in the session until it
// ends or Ctrl+C; NAME is one of openbox (the default), xfwm4, kwin, mutter and metacity.
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
    QStringList args = app.arguments().mid(1);
    QString windowManager = orlo::testing::VirtualSession::defaultWindowManager();
    if (args.size() >= 2 && args.first() == QLatin1String("--wm")) {
        windowManager = args.at(1);
        args = args.mid(2);
    }
    if (args.isEmpty()) {
        fprintf(stderr, "usage: orlo-session [--wm openbox|xfwm4|kwin|mutter|metacity] PROGRAM [ARGS...]\n");
        return 2;
    }
    orlo::testing::VirtualSession session(windowManager);
    if (!session.start()) {
        fprintf(stderr, "orlo-session: %s\n", qPrintable(session.error()));
        return 1;
    }
    printf("Virtual X session on DISPLAY=%s (1440x900 and 3440x1440 monitors, %s, tray).\n"
           "Take a screenshot:   DISPLAY=%s import -window root shot.png\n"
           "Press keys:          DISPLAY=%s xdotool key ctrl+alt+Left\n"
           "Stop with Ctrl+C.\n",
           qPrintable(session.display()), qPrintable(windowManager), qPrintable(session.display()),
           qPrintable(session.display()));
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
