#pragma once
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <vector>

namespace orlo::testing {

// A private X session: Xvfb with two RandR monitors (1440x900 primary, 3440x1440 to its
// right), openbox without key bindings of its own, a system tray, and private HOME and XDG
// folders. Every process it starts dies with it, also when the test process is killed.
class VirtualSession {
public:
    VirtualSession();
    ~VirtualSession();

    // Starts the session; false with a reason in error() when a piece would not start.
    bool start();
    void stop();
    QString error() const { return error_; }
    QString display() const { return display_; }
    QString home() const { return dir_.filePath(QStringLiteral("home")); }
    QString configHome() const { return dir_.filePath(QStringLiteral("home/.config")); }
    QString dataHome() const { return dir_.filePath(QStringLiteral("home/.local/share")); }
    QString runtimeDir() const { return dir_.filePath(QStringLiteral("runtime")); }
    QProcessEnvironment environment() const { return env_; }
    // A variable for every process the session starts from now on.
    void setVariable(const QString& name, const QString& value) { env_.insert(name, value); }

    // A process of the session; owned by it and ended with it.
    QProcess* launch(const QString& program, const QStringList& args, QProcessEnvironment env = {},
                     QProcess::ProcessChannelMode channels = QProcess::SeparateChannels);
    // Runs a command to its end; returns its exit code (-1 when it could not run).
    int run(const QString& program, const QStringList& args, QString* output = nullptr, int timeoutMs = 10000);
    QString output(const QString& program, const QStringList& args);

    // Keys as xdotool names them, e.g. key("ctrl+alt+Left").
    void key(const QString& keys);
    void click(int x, int y);
    // Visible windows whose title matches a regular expression.
    QStringList findWindows(const QString& titlePattern);
    // Outer geometry of a window in desktop coordinates, frame not included.
    QRect windowGeometry(const QString& windowId);
    // The same window with the window manager's decorations (_NET_FRAME_EXTENTS).
    QRect frameGeometry(const QString& windowId);
    // The left mouse button held down at a point, moved while held, and let go.
    void mouseDown(int x, int y);
    void mouseMove(int x, int y);
    void mouseUp();
    bool screenshot(const QString& path);

    // Polls a condition, running the event loop in between, until it holds or time runs out.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs = 5000);

    // The Orlo binary and helpers built beside the tests.
    static QString builtProgram(const QString& name);

private:
    bool startXvfb();
    bool runOpenbox();
    bool startTray();
    bool hasSelectionOwner(const QString& selection);

    QTemporaryDir dir_;
    QString display_;
    QString error_;
    QProcessEnvironment env_;
    std::vector<std::unique_ptr<QProcess>> processes_;
};

// Orlo running in a session, with its trace lines collected.
class OrloProcess {
public:
    OrloProcess(VirtualSession& session, QStringList args = {});
    ~OrloProcess();
    bool waitForLine(const QString& pattern, int timeoutMs = 8000);
    QString log();
    QProcess& process() { return *process_; }
    bool waitForTray(QRect* trayGeometry = nullptr, int timeoutMs = 8000);
    void quit();

private:
    VirtualSession& session_;
    QProcess* process_;
    QString log_;
};

}  // namespace orlo::testing
