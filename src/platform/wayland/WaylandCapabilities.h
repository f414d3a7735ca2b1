#pragma once
#include <QHash>
#include <QString>

namespace orlo::wayland {

class WaylandConnection;

// What the compositor offers Orlo, read from its globals and from the names on the session
// bus: never guessed from the compositor's name.
struct WaylandCapabilities {
    bool extDataControl = false;     // ext_data_control_manager_v1
    bool wlrDataControl = false;     // zwlr_data_control_manager_v1
    bool virtualKeyboard = false;    // zwp_virtual_keyboard_manager_v1
    bool foreignToplevels = false;   // zwlr_foreign_toplevel_manager_v1
    bool layerShell = false;         // zwlr_layer_shell_v1
    bool kwinFakeInput = false;      // org_kde_kwin_fake_input
    bool kwinScripting = false;      // org.kde.KWin on the session bus
    bool kdeGlobalShortcuts = false; // org.kde.kglobalaccel on the session bus
    bool portalGlobalShortcuts = false;  // the desktop portal's GlobalShortcuts
    bool swayConfigKeys = false;     // sway's IPC socket: keys are bound in its configuration

    static WaylandCapabilities probe(const WaylandConnection& connection);
    bool dataControl() const { return extDataControl || wlrDataControl; }
    // One line for the log: what was found.
    QString summary() const;
};

}  // namespace orlo::wayland
