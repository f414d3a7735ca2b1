#pragma once
#include "platform/WindowCatalog.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/wayland/ToplevelState.h"
#include <QHash>
#include <memory>
#include <vector>

struct zwlr_foreign_toplevel_manager_v1;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1_listener;
struct zwlr_foreign_toplevel_handle_v1_listener;

namespace orlo::wayland {

class WaylandConnection;

// The switcher's windows on compositors that list every client's toplevel windows (wlroots:
// sway, Hyprland, labwc...). The compositor tells titles, application ids and states but no
// process or geometry: an application is its id, and a window's number is Orlo's own count.
// Windows come most recently activated first, as Orlo saw their activated state come on.
class ForeignToplevelCatalog : public WindowCatalog {
public:
    // nullptr when the compositor offers no such list.
    static std::unique_ptr<ForeignToplevelCatalog> create(WaylandConnection& connection);
    ~ForeignToplevelCatalog() override;

    QList<RunningApp> runningApplications() override;
    QList<ScreenWindow> onScreenWindows() override;
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) override;
    void raise(WindowId element, bool unminimize) override;
    void activate(qint64 pid) override;

private:
    struct Toplevel {
        ForeignToplevelCatalog* catalog = nullptr;
        zwlr_foreign_toplevel_handle_v1* handle = nullptr;
        quint32 number = 0;
        QString title, appId;
        ToplevelState state;
        bool child = false;  // a dialog or other window of a parent window
        quint64 activatedAt = 0;
        // What the compositor sent since its last "done".
        QString pendingTitle, pendingAppId;
        ToplevelState pendingState;
        bool pendingChild = false;
    };
    ForeignToplevelCatalog(WaylandConnection& connection, zwlr_foreign_toplevel_manager_v1* manager);
    static const ::zwlr_foreign_toplevel_manager_v1_listener managerListener;
    static const ::zwlr_foreign_toplevel_handle_v1_listener handleListener;
    void add(zwlr_foreign_toplevel_handle_v1* handle);
    void apply(Toplevel& toplevel);
    void remove(Toplevel& toplevel);
    // Most recently activated first; among windows never seen activated, the newest first.
    std::vector<const Toplevel*> byRecency() const;
    const Toplevel* find(WindowId number) const;
    RunningApp applicationOf(const QString& appId);

    WaylandConnection& connection_;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    std::vector<std::unique_ptr<Toplevel>> toplevels_;
    quint32 nextNumber_ = 1;
    quint64 activations_ = 0;
    DesktopEntries entries_;
    QHash<QString, RunningApp> apps_;  // by application id
};

}  // namespace orlo::wayland
