#include "platform/posix/TerminationSignals.h"
#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orlo {

static int signalPipe[2] = {-1, -1};

static void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] auto written = ::write(signalPipe[1], &byte, 1);
}

void quitOnTerminationSignals()
{
    if (signalPipe[0] >= 0) return;
    // Not SOCK_CLOEXEC: macOS has no such flag, so the ends are marked one by one.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0) return;
    for (int end : signalPipe) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [] {
        char byte;
        [[maybe_unused]] auto got = ::read(signalPipe[0], &byte, 1);
        QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int sig : {SIGTERM, SIGINT, SIGHUP}) sigaction(sig, &action, nullptr);
}

}  // namespace orlo
