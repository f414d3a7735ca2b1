#pragma once
#include "platform/Workspace.h"
#include <memory>

namespace orlo::mac {

// Running applications through NSWorkspace and NSRunningApplication.
class MacWorkspace : public Workspace {
    Q_OBJECT
public:
    explicit MacWorkspace(QObject* parent = nullptr);
    ~MacWorkspace() override;

    std::optional<AppInfo> frontmostApplication() override;
    qint64 ownPid() const override;
    void activateApplication(const AppInfo& app) override;
    QIcon applicationIcon(const QString& bundleId) override;
    QString applicationsFolder() override;
    std::optional<AppInfo> applicationAt(const QString& path) override;
    QList<AppInfo> runningApplications() override;
    bool closeWindows(qint64 pid) override;

private:
    struct Observer;
    std::unique_ptr<Observer> observer_;
};

}  // namespace orlo::mac
