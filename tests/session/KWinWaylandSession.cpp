#include "KWinWaylandSession.h"
#include "VirtualSession.h"
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <csignal>
#include <sys/prctl.h>

namespace orlo::testing {

KWinWaylandSession::KWinWaylandSession()
{
    static int count = 0;
    busName_ = QStringLiteral("kwin-session-%1").arg(++count);
}

KWinWaylandSession::~KWinWaylandSession()
{
    QDBusConnection::disconnectFromBus(busName_);
    for (auto& p : processes_) {
        p->kill();
        p->waitForFinished(2000);
    }
}

QProcess* KWinWaylandSession::launch(const QString& program, const QStringList& args)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(env_);
    process->setWorkingDirectory(dir_.path());
    process->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process->start(program, args);
    processes_.push_back(std::move(process));
    return processes_.back().get();
}

bool KWinWaylandSession::start()
{
    env_ = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"WAYLAND_DISPLAY", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "QT_QPA_PLATFORM"})
        env_.remove(QString::fromLatin1(name));
    const QString runtime = dir_.filePath(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QDir().mkpath(dir_.filePath(QStringLiteral("home/.config")));
    env_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    env_.insert(QStringLiteral("HOME"), dir_.filePath(QStringLiteral("home")));
    env_.insert(QStringLiteral("XDG_CONFIG_HOME"), dir_.filePath(QStringLiteral("home/.config")));

    QProcess* bus = launch(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                          QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    QByteArray printed;
    VirtualSession::waitFor([&] { return (printed += bus->readAllStandardOutput()).contains('\n') || bus->state() == QProcess::NotRunning; });
    if (!printed.contains('\n')) {
        error_ = QStringLiteral("the D-Bus session bus did not start");
        return false;
    }
    env_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromLocal8Bit(printed.trimmed()));

    // Debian installs kwin_wayland with a file capability, which a container without that
    // capability refuses to run: a plain copy runs anywhere.
    const QString installed = QStandardPaths::findExecutable(QStringLiteral("kwin_wayland"));
    const QString copy = dir_.filePath(QStringLiteral("kwin_wayland"));
    if (installed.isEmpty() || !QFile::copy(installed, copy)) {
        error_ = QStringLiteral("kwin_wayland is not installed (Debian package kwin-wayland)");
        return false;
    }
    QProcess* kwin = launch(copy, {QStringLiteral("--virtual"), QStringLiteral("--no-lockscreen"), QStringLiteral("--socket"),
                                   QStringLiteral("wayland-orlo"), QStringLiteral("--width"), QStringLiteral("1280"),
                                   QStringLiteral("--height"), QStringLiteral("800"), QStringLiteral("--output-count"), QStringLiteral("2")});
    env_.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-orlo"));
    env_.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
    QDBusConnection connection = connectToBus();
    // KWin offers its scripting object a little after its name.
    auto scripting = [&] {
        const QDBusMessage reply = connection.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.KWin"), QStringLiteral("/Scripting"), QStringLiteral("org.freedesktop.DBus.Introspectable"),
            QStringLiteral("Introspect")));
        return reply.arguments().value(0).toString().contains(QLatin1String("org.kde.kwin.Scripting"));
    };
    const bool up = VirtualSession::waitFor([&] { return kwin->state() == QProcess::NotRunning || scripting(); }, 15000);
    if (!up || kwin->state() == QProcess::NotRunning) {
        error_ = QStringLiteral("kwin_wayland did not start: %1").arg(QString::fromLocal8Bit(kwin->readAllStandardError()));
        return false;
    }
    return true;
}

QDBusConnection KWinWaylandSession::connectToBus()
{
    return QDBusConnection::connectToBus(env_.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), busName_);
}

bool KWinWaylandSession::showWindow(const QString& title)
{
    QProcess* window = launch(VirtualSession::builtProgram(QStringLiteral("orlo-test-window")), {title});
    QByteArray printed;
    return VirtualSession::waitFor(
        [&] { return (printed += window->readAllStandardOutput()).contains("ready") || window->state() == QProcess::NotRunning; }, 10000)
        && printed.contains("ready");
}

bool KWinWaylandSession::loadScript(const QString& pluginName, const QByteArray& text)
{
    const QString path = dir_.filePath(pluginName + QStringLiteral(".js"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) return false;
    file.close();
    QDBusConnection bus = connectToBus();
    const QDBusReply<int> id = bus.call(QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/Scripting"),
                                                                       QStringLiteral("org.kde.kwin.Scripting"), QStringLiteral("loadScript"))
                                        << path << pluginName);
    if (!id.isValid() || id.value() < 0) return false;
    const QDBusMessage run = QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/%1").arg(id.value()),
                                                            QStringLiteral("org.kde.kwin.Script"), QStringLiteral("run"));
    return bus.call(run).type() == QDBusMessage::ReplyMessage;
}

}  // namespace orlo::testing
