#pragma once
#include "platform/Accessibility.h"
#include "platform/EdgeTiling.h"
#include "platform/EventTapBackend.h"
#include "platform/HotKeyService.h"
#include "platform/KeySynth.h"
#include "platform/KeyboardLayout.h"
#include "platform/LoginItem.h"
#include "platform/Pasteboard.h"
#include "platform/MouseMonitor.h"
#include "platform/Notifications.h"
#include "platform/Overlay.h"
#include "platform/Screens.h"
#include "platform/Scripting.h"
#include "platform/SettingsStorage.h"
#include "platform/SystemSwitcher.h"
#include "platform/WindowCatalog.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"
#include "platform/Gamma.h"
#include "platform/PowerAssertion.h"
#include "platform/ProcessTable.h"
#include "platform/UserFiles.h"
#include <QHash>
#include <memory>

namespace orlo {

// One instance of every port. main() creates the real one for the build's platform;
// unit tests create the fake one.
struct Platform {
    virtual ~Platform() = default;

    std::unique_ptr<Accessibility> accessibility;
    std::unique_ptr<KeyboardLayout> keyboardLayout;
    std::unique_ptr<HotKeyService> hotKeys;
    std::unique_ptr<EventTapBackend> eventTaps;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<Screens> screens;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<SettingsStorage> settings;
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<KeySynth> keySynth;
    std::unique_ptr<WindowServer> windowServer;
    std::unique_ptr<MouseMonitor> mouseMonitor;
    std::unique_ptr<WindowCatalog> windowCatalog;
    std::unique_ptr<Scripting> scripting;
    std::unique_ptr<ProcessTable> processes;
    std::unique_ptr<Gamma> gamma;
    std::unique_ptr<PowerAssertion> power;
    std::unique_ptr<UserFiles> userFiles;
    std::unique_ptr<Notifications> notifications;
    std::unique_ptr<EdgeTiling> edgeTiling;
    std::unique_ptr<SystemSwitcher> systemSwitcher;
    std::unique_ptr<Overlay> overlay;

    // The desktop is a Wayland session that Orlo reaches through its X11 server: only the
    // windows of X11 programs can be listed, switched and snapped.
    bool throughXWayland = false;
    // What the session keeps a module from doing, by module id: one plain sentence for the
    // module's settings page (a compositor that does not offer what the module needs).
    QHash<QString, QString> moduleLimits;
};

// Readies Qt for the display this build's platform uses, before the application object is
// made; returns why there is no display Orlo can use, or an empty text.
QString prepareSystemDisplay();

// The platform of this build, or nullptr with a reason when the system cannot be reached.
std::unique_ptr<Platform> createSystemPlatform(QString* error);

}  // namespace orlo
