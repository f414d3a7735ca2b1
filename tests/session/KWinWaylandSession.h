#pragma once
#include <QDBusConnection>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <vector>

namespace orlo::testing {

// A private KWin on Wayland: kwin_wayland --virtual with two 1280x800 screens side by side,
// its own D-Bus session bus and runtime folder, and Qt windows of other processes on it.
// Every process it starts dies with it.
class KWinWaylandSession {
public:
    KWinWaylandSession();
    ~KWinWaylandSession();
    bool start();
    QString error() const { return error_; }
    QProcessEnvironment environment() const { return env_; }
    QDBusConnection connectToBus();
    // A window of another process (orlo-test-window) with this title, once it is shown.
    bool showWindow(const QString& title);
    // Loads and runs a script in KWin under this plugin name.
    bool loadScript(const QString& pluginName, const QByteArray& text);

private:
    QProcess* launch(const QString& program, const QStringList& args);

    QTemporaryDir dir_;
    QString error_;
    QString busName_;
    QProcessEnvironment env_;
    std::vector<std::unique_ptr<QProcess>> processes_;
};

}  // namespace orlo::testing
