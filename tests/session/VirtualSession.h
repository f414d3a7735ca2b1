#pragma once
#include "ProcessSession.h"
#include <QMargins>
#include <QRect>

namespace orlo::testing {

// A private X session: Xvfb with two RandR monitors (1440x900 primary, 3440x1440 to its
// right), a window manager and a system tray, beside what every ProcessSession has.
//
// The window manager is openbox without key bindings of its own, or one of the desktops'
// window managers with its default configuration: "xfwm4", "kwin", "mutter", "metacity".
// Without a name, ORLO_TEST_WM chooses (ctest sets it per window manager).
class VirtualSession : public ProcessSession {
public:
    explicit VirtualSession(QString windowManager = defaultWindowManager());
    ~VirtualSession() override;

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
    QString display() const { return display_; }

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

private:
    bool startXvfb();
    bool startWindowManager();
    void startOpenbox();
    bool setUpMonitors();
    bool startTray();
    bool hasSelectionOwner(const QString& selection);

    QString windowManager_;
    bool tray_ = true;
    bool switchingKeysFree_ = false;
    bool keyfileSettings_ = false;  // the GNOME window managers read a keyfile written here
    QString display_;
};

// Orlo running in a session, with its trace lines collected.
class OrloProcess {
public:
    // environment: variables for Orlo alone, over the session's.
    OrloProcess(ProcessSession& session, QStringList args = {}, const QProcessEnvironment& environment = {});
    // program: another Orlo than the one built beside the tests, such as an installed one.
    OrloProcess(const QString& program, ProcessSession& session, QStringList args = {},
                const QProcessEnvironment& environment = {});
    ~OrloProcess();
    bool waitForLine(const QString& pattern, int timeoutMs = 8000);
    QString log();
    QProcess& process() { return *process_; }
    bool waitForTray(QRect* trayGeometry = nullptr, int timeoutMs = 8000);
    void quit();

private:
    ProcessSession& session_;
    QProcess* process_;
    QString log_;
};

}  // namespace orlo::testing
