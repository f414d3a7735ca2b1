#pragma once
#include <QObject>
#include <QString>
#include <optional>

namespace orlo {

struct AppInfo {
    qint64 pid = 0;
    QString bundleId;  // stable identity: desktop-file id on Linux, bundle identifier on macOS
    QString name;
    bool operator==(const AppInfo&) const = default;
};

class Workspace : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    virtual std::optional<AppInfo> frontmostApplication() = 0;
    virtual qint64 ownPid() const = 0;
signals:
    // Another application came to the front.
    void applicationActivated(const orlo::AppInfo& app);
};

}  // namespace orlo
