#include "ProcessSession.h"
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>
#include <csignal>
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace orlo::testing {

ProcessSession::ProcessSession()
{
    for (const char* sub : {"home/.config", "home/.local/share", "home/.cache", "runtime"})
        QDir().mkpath(dir_.filePath(QString::fromLatin1(sub)));
    QFile::setPermissions(runtimeDir(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

ProcessSession::~ProcessSession() { stop(); }

void ProcessSession::resetEnvironment()
{
    env_ = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "SESSION_MANAGER",
                             "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE", "QT_QPA_PLATFORM"})
        env_.remove(QString::fromLatin1(name));
    env_.insert(QStringLiteral("HOME"), home());
    env_.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
    env_.insert(QStringLiteral("XDG_DATA_HOME"), dataHome());
    env_.insert(QStringLiteral("XDG_CACHE_HOME"), dir_.filePath(QStringLiteral("home/.cache")));
    env_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDir());
}

QString ProcessSession::builtProgram(const QString& name)
{
    // Tests and tools live in build/tests and build/tools; Orlo itself in build/.
    QDir dir(QCoreApplication::applicationDirPath());
    for (int up = 0; up < 3; ++up) {
        if (QFile::exists(dir.filePath(name))) return dir.filePath(name);
        if (QFile::exists(dir.filePath(QStringLiteral("tests/") + name))) return dir.filePath(QStringLiteral("tests/") + name);
        dir.cdUp();
    }
    return name;
}

QString ProcessSession::screenshotPath(const QString& name)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    return folder + QStringLiteral("/") + name;
}

void ProcessSession::runAs(uint uid, uint gid)
{
    // The whole session folder is the user's, as a home is.
    run(QStringLiteral("chown"), {QStringLiteral("-R"), QStringLiteral("%1:%2").arg(uid).arg(gid), dir_.path()});
    user_ = std::make_pair(uid, gid);
}

void ProcessSession::setChildSetup(QProcess& process) const
{
    const auto user = user_;
    process.setChildProcessModifier([user] {
        // Die with the test process, however it ends.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (user && (setgroups(0, nullptr) != 0 || setgid(user->second) != 0 || setuid(user->first) != 0)) _exit(127);
        // Changing user clears the death signal.
        if (user) prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
}

QProcess* ProcessSession::launch(const QString& program, const QStringList& args, QProcessEnvironment env,
                                 QProcess::ProcessChannelMode channels)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(channels);
    process->setProcessEnvironment(env.isEmpty() ? env_ : env);
    process->setWorkingDirectory(home());
    setChildSetup(*process);
    process->start(program, args);
    processes_.push_back(std::move(process));
    return processes_.back().get();
}

int ProcessSession::run(const QString& program, const QStringList& args, QString* output, int timeoutMs)
{
    QProcess process;
    process.setProcessEnvironment(env_);
    process.setProcessChannelMode(QProcess::MergedChannels);
    setChildSetup(process);
    process.start(program, args);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        return -1;
    }
    if (output) *output = QString::fromLocal8Bit(process.readAll());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QString ProcessSession::output(const QString& program, const QStringList& args)
{
    QString out;
    run(program, args, &out);
    return out.trimmed();
}

bool ProcessSession::waitFor(const std::function<bool()>& condition, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (true) {
        if (condition()) return true;
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(20);
    }
}

bool ProcessSession::startBus()
{
    const QString address = QStringLiteral("unix:path=") + runtimeDir() + QStringLiteral("/bus");
    QProcess* bus = launch(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                          QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                                                          QStringLiteral("--address=") + address});
    QByteArray printed;
    waitFor([&] { return (printed += bus->readAllStandardOutput()).contains('\n') || bus->state() == QProcess::NotRunning; });
    if (!printed.contains('\n')) {
        error_ = QStringLiteral("the D-Bus session bus did not start: %1").arg(QString::fromLocal8Bit(bus->readAllStandardError()));
        return false;
    }
    env_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromLocal8Bit(printed.trimmed()));
    return true;
}

void ProcessSession::stop()
{
    // Clients first, the display server last.
    for (auto it = processes_.rbegin(); it != processes_.rend(); ++it) {
        QProcess& p = **it;
        if (p.state() == QProcess::NotRunning) continue;
        p.terminate();
        if (!p.waitForFinished(1500)) {
            p.kill();
            p.waitForFinished(1000);
        }
    }
    processes_.clear();
}

}  // namespace orlo::testing
