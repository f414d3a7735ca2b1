#pragma once
#include <QProcess>
#include <QProcessEnvironment>
#include <QMargins>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <vector>

namespace orlo::testing {

// A private X session: Xvfb with two RandR monitors (1440x900 primary, 3440x1440 to its
// right), a window manager, a system tray, a private D-Bus session bus, and private HOME and
// XDG folders. Every process it starts dies with it, also when the test process is killed.
//
// The window manager is openbox without key bindings of its own, or one of the desktops'
// window managers with its default configuration: "xfwm4", "kwin", "mutter", "metacity".
// Without a name, ORLO_TEST_WM chooses (ctest sets it per window manager).
class VirtualSession {
public:
    explicit VirtualSession(QString windowManager = defaultWindowManager());
    ~VirtualSession();

    static QString defaultWindowManager();
    static QStringList windowManagers();
    QString windowManager() const { return windowManager_; }

    // Without a system tray, as on a stock GNOME desktop; called before start().
    void setSystemTray(bool on) { tray_ = on; }
    // Unbinds the desktop window manager's own Alt+Tab and Super+Tab in its settings, as a
    // user does who wants another switcher; false under openbox (which binds neither here) or
    // when the settings could not be written. Called before start().
    bool freeSwitchingKeys();
    // Switches metacity's own edge tiling off in its settings, as Orlo's Windows page tells
    // its users to: metacity holds a window it has tiled against every request to move it.
    // False under the other window managers. Called before start().
    bool switchOffEdgeTiling();
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
    QString busAddress() const { return env_.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); }
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
    QMargins frameExtents(const QString& windowId);
    // The left mouse button held down at a point, moved while held, and let go.
    void mouseDown(int x, int y, int button = 1);
    void mouseMove(int x, int y);
    void mouseUp(int button = 1);
    bool screenshot(const QString& path);

    // Polls a condition, running the event loop in between, until it holds or time runs out.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs = 5000);

    // Where a test keeps a screenshot for people to look at: beside the test binary.
    static QString screenshotPath(const QString& name);
    // The Orlo binary and helpers built beside the tests.
    static QString builtProgram(const QString& name);

private:
    bool startXvfb();
    bool startBus();
    bool startWindowManager();
    void startOpenbox();
    bool setUpMonitors();
    bool startTray();
    bool hasSelectionOwner(const QString& selection);

    QTemporaryDir dir_;
    QString windowManager_;
    bool tray_ = true;
    bool switchingKeysFree_ = false;
    bool keyfileSettings_ = false;  // the GNOME window managers read a keyfile written here
    QString display_;
    QString error_;
    QProcessEnvironment env_;
    std::vector<std::unique_ptr<QProcess>> processes_;
};

// Orlo running in a session, with its trace lines collected.
class OrloProcess {
public:
    // environment: variables for Orlo alone, over the session's.
    OrloProcess(VirtualSession& session, QStringList args = {}, const QProcessEnvironment& environment = {});
    // program: another Orlo than the one built beside the tests, such as an installed one.
    OrloProcess(const QString& program, VirtualSession& session, QStringList args = {},
                const QProcessEnvironment& environment = {});
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
