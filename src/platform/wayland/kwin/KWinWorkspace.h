#pragma once
#include "platform/Workspace.h"

namespace orlo::kwin {

class KWinApplications;
class KWinDesktop;

// The application in front is the one owning KWin's active window.
class KWinWorkspace : public Workspace {
    Q_OBJECT
public:
    KWinWorkspace(KWinDesktop& desktop, KWinApplications& apps, QObject* parent = nullptr);

    std::optional<AppInfo> frontmostApplication() override;
    qint64 ownPid() const override;
    void activateApplication(const AppInfo& app) override;
    QIcon applicationIcon(const QString& bundleId) override;
    QString applicationsFolder() override;
    std::optional<AppInfo> applicationAt(const QString& path) override;
    QList<AppInfo> runningApplications() override;
    bool closeWindows(qint64 pid) override;

private:
    KWinDesktop& desktop_;
    KWinApplications& apps_;
    std::optional<AppInfo> lastFront_;
};

}  // namespace orlo::kwin
