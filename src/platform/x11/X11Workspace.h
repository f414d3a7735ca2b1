#pragma once
#include "platform/Workspace.h"
#include "platform/x11/WindowApplications.h"
#include <QHash>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// The application in front is the one owning the window manager's active window.
class X11Workspace : public Workspace {
    Q_OBJECT
public:
    explicit X11Workspace(XConnection& x, QObject* parent = nullptr);
    ~X11Workspace() override;
    std::optional<AppInfo> frontmostApplication() override;
    qint64 ownPid() const override;

    void activateApplication(const AppInfo& app) override;
    QIcon applicationIcon(const QString& bundleId) override;
    QString applicationsFolder() override;
    std::optional<AppInfo> applicationAt(const QString& path) override;
    QList<AppInfo> runningApplications() override;
    bool closeWindows(qint64 pid) override;

    // The application a top-level window belongs to.
    std::optional<AppInfo> applicationOf(xcb_window_t window);

private:
    XConnection& x_;
    WindowApplications apps_;
    int listener_;
    std::optional<AppInfo> lastFront_;
    QHash<qint64, xcb_window_t> lastWindowOfPid_;
};

}  // namespace orlo::x11
