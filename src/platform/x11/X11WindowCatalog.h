#pragma once
#include "platform/WindowCatalog.h"
#include "platform/x11/ActivationHistory.h"
#include "platform/Workspace.h"
#include <QHash>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace orlo::x11 {

class X11Workspace;
class XConnection;

// The switcher's windows through the EWMH window manager. The on-screen list and each
// application's list come from the same source, the client list of the current desktop
// (sticky windows included); a window's number and its element are both its X window id.
// Everything one listing asks for is read once, in one round of requests.
class X11WindowCatalog : public WindowCatalog {
public:
    X11WindowCatalog(XConnection& x, X11Workspace& workspace);
    ~X11WindowCatalog() override;

    QList<RunningApp> runningApplications() override;
    QList<ScreenWindow> onScreenWindows() override;
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) override;
    void raise(WindowId element, bool unminimize) override;
    void activate(qint64 pid) override;

private:
    struct Client {
        xcb_window_t window = XCB_NONE;
        qint64 pid = 0;
        AppInfo app;
        QString title;
        QRectF frame;
        bool onThisDesktop = true;
        bool hidden = false;
        bool standard = true;  // normal or dialog, shown in task lists
        bool regular = false;  // an ordinary application window
        int layer = 0;
        double alpha = 1;
    };
    // The clients, most recently active first, read at most once per turn of the event loop.
    const QList<Client>& clients();
    QList<Client> readClients();
    std::optional<AppInfo> applicationOf(xcb_window_t window);

    XConnection& x_;
    X11Workspace& workspace_;
    ActivationHistory history_;
    std::optional<QList<Client>> snapshot_;
    QHash<xcb_window_t, std::optional<AppInfo>> apps_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orlo::x11
