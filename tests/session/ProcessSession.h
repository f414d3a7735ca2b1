#pragma once
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orlo::testing {

// What every private session of the tests has, whatever its display server: its own HOME and
// XDG folders, an environment, a D-Bus session bus, and processes that die with it (also when
// the test process is killed). The processes may run as another user than the tests.
class ProcessSession {
public:
    ProcessSession();
    virtual ~ProcessSession();
    ProcessSession(const ProcessSession&) = delete;
    ProcessSession& operator=(const ProcessSession&) = delete;

    QString error() const { return error_; }
    QString home() const { return dir_.filePath(QStringLiteral("home")); }
    QString configHome() const { return dir_.filePath(QStringLiteral("home/.config")); }
    QString dataHome() const { return dir_.filePath(QStringLiteral("home/.local/share")); }
    QString runtimeDir() const { return dir_.filePath(QStringLiteral("runtime")); }
    QProcessEnvironment environment() const { return env_; }
    QString busAddress() const { return env_.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); }
    // A variable for every process the session starts from now on.
    void setVariable(const QString& name, const QString& value) { env_.insert(name, value); }

    // A process of the session; owned by it and ended with it.
    QProcess* launch(const QString& program, const QStringList& args, QProcessEnvironment env = {},
                     QProcess::ProcessChannelMode channels = QProcess::SeparateChannels);
    // Runs a command to its end; returns its exit code (-1 when it could not run).
    int run(const QString& program, const QStringList& args, QString* output = nullptr, int timeoutMs = 10000);
    QString output(const QString& program, const QStringList& args);
    // Ends every process, the last started first.
    void stop();

    // Polls a condition, running the event loop in between, until it holds or time runs out.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs = 5000);
    // Where a test keeps a screenshot for people to look at: beside the test binary.
    static QString screenshotPath(const QString& name);
    // The Orlo binary and helpers built beside the tests.
    static QString builtProgram(const QString& name);

protected:
    // The environment every session starts from: the folders above, nothing of the desktop
    // the tests run in.
    void resetEnvironment();
    bool startBus();
    // From now on, processes run as this user, who owns the session's folders.
    void runAs(uint uid, uint gid);
    void setChildSetup(QProcess& process) const;

    QTemporaryDir dir_;
    QString error_;
    QProcessEnvironment env_;

private:
    std::vector<std::unique_ptr<QProcess>> processes_;
    std::optional<std::pair<uint, uint>> user_;
};

}  // namespace orlo::testing
