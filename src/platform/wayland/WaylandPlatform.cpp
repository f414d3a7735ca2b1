#include "platform/wayland/WaylandPlatform.h"
#include "platform/linux/DBusNotifications.h"
#include "platform/linux/DesktopPowerAssertion.h"
#include "platform/linux/JsonSettingsStorage.h"
#include "platform/linux/KGlobalAccelHotKeys.h"
#include "platform/linux/NoScripting.h"
#include "platform/linux/PortalHotKeys.h"
#include "platform/linux/NoSystemSwitcher.h"
#include "platform/linux/ProcFsProcessTable.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/XdgUserFiles.h"
#include "platform/posix/WindowOverlay.h"
#include "platform/wayland/FakeInputSynth.h"
#include "platform/wayland/FocusedWindowTaps.h"
#include "platform/wayland/ForeignToplevelCatalog.h"
#include "platform/wayland/LayerShellOverlay.h"
#include "platform/wayland/NoGamma.h"
#include "platform/wayland/NoHotKeys.h"
#include "platform/wayland/NoKeySynth.h"
#include "platform/wayland/NoMouseMonitor.h"
#include "platform/wayland/NoPasteboard.h"
#include "platform/wayland/NoWindowCatalog.h"
#include "platform/wayland/NoWindowServer.h"
#include "platform/wayland/QtScreens.h"
#include "platform/wayland/SwayConfigKeys.h"
#include "platform/wayland/VirtualKeyboardSynth.h"
#include "platform/wayland/WaylandAccessibility.h"
#include "platform/wayland/WaylandCapabilities.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/WaylandKeyboardLayout.h"
#include "platform/wayland/WaylandPasteboard.h"
#include "platform/wayland/WaylandWorkspace.h"
#include "platform/wayland/kwin/KWinPorts.h"
#include <QDBusConnection>
#include <QPointer>
#include <QCoreApplication>
#include <wayland-client.h>

namespace orlo::wayland {

namespace {
struct ConnectionHolder {
    std::unique_ptr<WaylandConnection> connection;
    std::unique_ptr<kwin::KWinPorts> kwin;
};
// The connection and KWin's script are a base declared before Platform, so they are
// destroyed after every port that uses them.
struct WaylandPlatform : ConnectionHolder, Platform {};

// Wayland has no window-manager edge tiling that a client could switch off.
struct NoEdgeTiling : EdgeTiling {
    QString switchOffPlace() override { return {}; }
};

// What the modules cannot do in this session, in the words of their settings pages.
QHash<QString, QString> moduleLimits(const WaylandCapabilities& c, bool typesKeys)
{
    QHash<QString, QString> limits;
    if (!c.dataControl())
        limits.insert(QStringLiteral("clipboard"),
                      QStringLiteral("This compositor does not let Orlo watch the clipboard (it offers no data-control "
                                     "protocol), so copies are not recorded."));
    else if (!typesKeys)
        limits.insert(QStringLiteral("clipboard"),
                      QStringLiteral("This compositor does not let Orlo type keys, so choosing an item copies it and "
                                     "you press Ctrl+V yourself."));
    limits.insert(QStringLiteral("switcher"),
                  QStringLiteral("Orlo cannot list other programs' windows on this Wayland compositor yet, so the "
                                 "switcher shows none; its shortcut works from the compositor's own key bindings "
                                 "running \"orlo switcher\"."));
    if (c.swayConfigKeys)
        limits.insert(QStringLiteral("windows"),
                      QStringLiteral("sway tiles windows and places them itself, so Orlo does not snap windows here."));
    else
        limits.insert(QStringLiteral("windows"),
                      QStringLiteral("Orlo cannot move other programs' windows on this Wayland compositor, so snapping "
                                     "is not available."));
    limits.insert(QStringLiteral("system"),
                  QStringLiteral("Wayland compositors do not let programs change display colours or hold the "
                                 "keyboard, so Dim Display and Keyboard Cleaning are not available here."));
    return limits;
}
// The paste keystroke on the seat's virtual keyboard (wlroots), else through KWin's fake
// input where KWin lets Orlo use it; otherwise the user pastes by hand.
std::unique_ptr<KeySynth> keySynth(WaylandConnection& wayland)
{
    if (auto synth = VirtualKeyboardSynth::create(wayland)) return synth;
    if (auto synth = FakeInputSynth::create(wayland)) return synth;
    return std::make_unique<NoKeySynth>();
}

// Hot keys from KDE's global shortcuts service, else from the desktop portal; on sway, whose
// configuration alone binds keys, as lines for that configuration.
std::unique_ptr<HotKeyService> hotKeyService(const WaylandCapabilities& capabilities, KeyboardLayout& layout)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (capabilities.kdeGlobalShortcuts) return std::make_unique<KGlobalAccelHotKeys>(bus, layout);
    if (capabilities.portalGlobalShortcuts) return std::make_unique<PortalHotKeys>(bus, layout);
    if (capabilities.swayConfigKeys) return std::make_unique<SwayConfigKeys>(layout);
    return std::make_unique<NoHotKeys>();
}

// On KWin, Orlo's script lists and places other programs' windows.
void useKWin(WaylandPlatform& platform, const WaylandCapabilities& capabilities)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!capabilities.kwinScripting) return;
    QString why;
    platform.kwin = kwin::KWinPorts::start(bus, &why);
    if (!platform.kwin) {
        fprintf(stderr, "Orlo: KWin's windows are out of reach: %s\n", qPrintable(why));
        return;
    }
    platform.kwin->install(platform);
    fprintf(stderr, "Orlo: KWin's windows through Orlo's script\n");
    platform.moduleLimits.remove(QStringLiteral("switcher"));
    platform.moduleLimits.remove(QStringLiteral("windows"));
}
}  // namespace

QString prepareDisplay()
{
    // Qt gives up on a compositor it cannot reach by aborting: try it first.
    wl_display* probe = wl_display_connect(nullptr);
    if (!probe)
        return QStringLiteral("cannot connect to the Wayland compositor \"%1\".")
            .arg(qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0")));
    wl_display_disconnect(probe);
    qputenv("QT_QPA_PLATFORM", "wayland");
    return {};
}

std::unique_ptr<Platform> createPlatform(QString* error)
{
    auto connection = WaylandConnection::open(error);
    if (!connection) return nullptr;
    auto platform = std::make_unique<WaylandPlatform>();
    WaylandConnection& wayland = *connection;
    platform->connection = std::move(connection);
    const WaylandCapabilities capabilities = WaylandCapabilities::probe(wayland);
    fprintf(stderr, "Orlo: Wayland compositor offers: %s\n", qPrintable(capabilities.summary()));
    platform->keySynth = keySynth(wayland);
    platform->moduleLimits = moduleLimits(capabilities, platform->keySynth->canPaste());

    platform->gamma = std::make_unique<NoGamma>();
    platform->accessibility = std::make_unique<WaylandAccessibility>();
    platform->keyboardLayout = std::make_unique<WaylandKeyboardLayout>(wayland);
    platform->hotKeys = hotKeyService(capabilities, *platform->keyboardLayout);
    // The switcher's display above every window where the compositor has a layer shell, else
    // as a frameless window; keys typed into either reach the taps.
    QPointer<LayerShellOverlay> layerShell;
    if (auto overlay = LayerShellOverlay::create(wayland)) {
        layerShell = overlay.get();
        platform->overlay = std::move(overlay);
    } else {
        platform->overlay = std::make_unique<WindowOverlay>();
    }
    platform->eventTaps = std::make_unique<FocusedWindowTaps>([layerShell] {
        return layerShell ? layerShell->keyboardModifiers() : std::nullopt;
    });
    platform->workspace = std::make_unique<WaylandWorkspace>();
    platform->screens = std::make_unique<QtScreens>();
    platform->windowServer = std::make_unique<NoWindowServer>();
    platform->mouseMonitor = std::make_unique<NoMouseMonitor>();
    platform->loginItem = std::make_unique<XdgLoginItem>(XdgLoginItem::defaultPath(), QCoreApplication::applicationFilePath());
    platform->settings = std::make_unique<JsonSettingsStorage>(JsonSettingsStorage::defaultPath());
    if (auto device = ClipboardDevice::create(wayland))
        platform->pasteboard = std::make_unique<WaylandPasteboard>(std::move(device));
    else
        platform->pasteboard = std::make_unique<NoPasteboard>();
    if (auto catalog = ForeignToplevelCatalog::create(wayland)) {
        platform->windowCatalog = std::move(catalog);
        platform->moduleLimits.remove(QStringLiteral("switcher"));
    } else {
        platform->windowCatalog = std::make_unique<NoWindowCatalog>();
    }
    platform->scripting = std::make_unique<NoScripting>();
    platform->processes = std::make_unique<ProcFsProcessTable>();
    platform->power = std::make_unique<DesktopPowerAssertion>();
    platform->userFiles = std::make_unique<XdgUserFiles>(XdgUserFiles::forCurrentUser());
    platform->notifications = std::make_unique<DBusNotifications>();
    platform->edgeTiling = std::make_unique<NoEdgeTiling>();
    // KWin keeps Alt+Tab for its own task switcher, in KDE's global shortcuts.
    platform->systemSwitcher = std::make_unique<NoSystemSwitcher>(
        capabilities.kdeGlobalShortcuts ? QStringLiteral("System Settings › Shortcuts › KWin › Walk Through Windows") : QString());
    useKWin(*platform, capabilities);
    // The keymap and the clipboard's first contents.
    wayland.roundtrip();
    return platform;
}

}  // namespace orlo::wayland
