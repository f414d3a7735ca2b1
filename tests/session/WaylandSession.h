#pragma once
#include "ProcessSession.h"
#include <QDBusConnection>

namespace orlo::testing {

// A private Wayland session: a headless compositor with two 1280x800 outputs side by side,
// and a D-Bus session bus, beside what every ProcessSession has. The compositor and every
// program of the session run as a plain user of their own (made when missing), since sway
// refuses to run as root; a test that talks to KWin from its own process keeps its own user
// instead, so that KWin can read the files the test hands it.
//
// "sway": sway on wlroots' headless back end with the pixman renderer and no input devices,
// on a configuration of its own (no bar, no XWayland).
// "kwin": kwin_wayland --virtual without its lock screen; it lets the built Orlo and the
// tests' key tool type through its fake input, by desktop entries as for an installed Orlo.
class WaylandSession : public ProcessSession {
public:
    enum class User { Plain, OfTheTests };
    explicit WaylandSession(QString compositor, User user = User::Plain);
    ~WaylandSession() override;

    static QStringList compositors() { return {QStringLiteral("sway"), QStringLiteral("kwin")}; }
    QString compositor() const { return compositor_; }
    // The plain user the session runs as, "orlo-test".
    static QString userName();

    // Starts the session; false with a reason in error() when a piece would not start.
    bool start();
    QString waylandDisplay() const { return env_.value(QStringLiteral("WAYLAND_DISPLAY")); }
    // The compositor's globals, by interface name (wayland-info).
    QStringList globals();
    // A program run in the session with Qt on its Wayland platform (Qt programs of the tests).
    QProcess* launchQt(const QString& program, const QStringList& args);
    // Presses keys by their place on a US keyboard (orlo-test-keys: "Down", "Return", "2",
    // letters, "Alt+Tab"): on a virtual keyboard (sway), through KWin's fake input (KWin).
    bool press(const QStringList& keys);
    // The whole desktop as a PNG: grim on sway, KWin's own screenshot service on KWin.
    bool screenshot(const QString& path);
    // A command for sway over its IPC (swaymsg); its output.
    QString swaymsg(const QStringList& arguments);
    // The title of the window with the keyboard focus (sway only).
    QString focusedTitle();
    // The session's bus, for a test that plays a desktop service or calls one itself.
    QDBusConnection connectToBus();
    // A window of another process (orlo-test-window) with this title, once it is shown.
    bool showWindow(const QString& title);
    // Loads and runs a script in KWin under this plugin name.
    bool loadScript(const QString& pluginName, const QByteArray& text);

private:
    bool prepareUser();
    bool startSway();
    bool startKWin();
    bool trustWithFakeInput();
    bool waitForSocket(QProcess* compositor);
    bool waitForKWinScripting(QProcess* kwin);

    QString compositor_;
    User user_;
    QString busName_;
};

}  // namespace orlo::testing
