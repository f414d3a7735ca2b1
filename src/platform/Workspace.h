#pragma once
#include <QIcon>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace orlo {

struct AppInfo {
    qint64 pid = 0;
    QString bundleId;  // stable identity: desktop-file id on Linux, bundle identifier on macOS
    QString name;
    // Where the application's bundle lies, and the same place with symbolic links resolved
    // when that differs: its helpers run from inside it. Empty where applications have none.
    QStringList bundlePaths{};
    bool operator==(const AppInfo&) const = default;
};

class Workspace : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    virtual std::optional<AppInfo> frontmostApplication() = 0;
    virtual qint64 ownPid() const = 0;

    // Brings the application's most recent window to the front.
    virtual void activateApplication(const AppInfo&) {}
    // The application's icon, null when it cannot be found.
    virtual QIcon applicationIcon(const QString& /*bundleId*/) { return {}; }
    // Where the installed applications are, for the user to choose among them.
    virtual QString applicationsFolder() { return {}; }
    // The application that a file of that folder stands for (pid 0).
    virtual std::optional<AppInfo> applicationAt(const QString& /*path*/) { return std::nullopt; }
    // Applications with windows the user can switch to, one entry per process.
    virtual QList<AppInfo> runningApplications() { return {}; }
    // Asks every window of the process to close, as its close button would (the application
    // may ask to save first); false when it has none.
    virtual bool closeWindows(qint64 /*pid*/) { return false; }
signals:
    // Another application came to the front.
    void applicationActivated(const orlo::AppInfo& app);
};

}  // namespace orlo
