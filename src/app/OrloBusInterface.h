#pragma once
#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QStringList>

namespace orlo {

class AppModel;
class OrloApp;

// Orlo's actions and module switches on the session bus, under the application id, for
// gdbus, scripts and the desktop's own tools: the same actions as Orlo's command line.
// A method that could not be carried out answers with an error that says why.
class OrloBusInterface : public QDBusAbstractAdaptor {
    Q_OBJECT
    // The application id of AppIdentity.h, which a literal must repeat here.
    Q_CLASSINFO("D-Bus Interface", "app.orlo.Orlo")
    Q_PROPERTY(bool SystemEnabled READ systemEnabled WRITE setSystemEnabled)
    Q_PROPERTY(bool WindowsEnabled READ windowsEnabled WRITE setWindowsEnabled)
    Q_PROPERTY(bool SwitcherEnabled READ switcherEnabled WRITE setSwitcherEnabled)
    Q_PROPERTY(bool ClipboardEnabled READ clipboardEnabled WRITE setClipboardEnabled)
    Q_PROPERTY(QString Version READ version)
public:
    static constexpr char Path[] = "/app/orlo/Orlo";

    // Puts the interface on the session bus under the application id; returns the object that
    // carries it, or nullptr with a warning when there is no bus or the name is taken.
    static QObject* publish(OrloApp& app, AppModel& model);

    bool systemEnabled() const { return enabled("system"); }
    void setSystemEnabled(bool on) { setEnabled("system", on); }
    bool windowsEnabled() const { return enabled("windows"); }
    void setWindowsEnabled(bool on) { setEnabled("windows", on); }
    bool switcherEnabled() const { return enabled("switcher"); }
    void setSwitcherEnabled(bool on) { setEnabled("switcher", on); }
    bool clipboardEnabled() const { return enabled("clipboard"); }
    void setClipboardEnabled(bool on) { setEnabled("clipboard", on); }
    QString version() const;

public slots:
    void OpenSwitcher(const QDBusMessage& message) { perform({QStringLiteral("switcher")}, message); }
    void OpenClipboard(const QDBusMessage& message) { perform({QStringLiteral("clipboard")}, message); }
    // An empty page opens the General page.
    void OpenSettings(const QString& page, const QDBusMessage& message);
    void Snap(const QString& action, const QDBusMessage& message) { perform({QStringLiteral("snap"), action}, message); }
    void ToggleKeyboardCleaning(const QDBusMessage& message) { perform({QStringLiteral("toggle-keyboard-cleaning")}, message); }
    void TogglePreventSleep(const QDBusMessage& message) { perform({QStringLiteral("toggle-prevent-sleep")}, message); }
    void Quit(const QDBusMessage& message) { perform({QStringLiteral("quit")}, message); }

private:
    OrloBusInterface(QObject* carrier, OrloApp& app, AppModel& model);
    bool enabled(const char* module) const;
    void setEnabled(const char* module, bool on);
    void perform(const QStringList& words, const QDBusMessage& message);
    void announceSwitches();

    OrloApp& app_;
    AppModel& model_;
};

}  // namespace orlo
