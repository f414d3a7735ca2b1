#include "platform/x11/X11Platform.h"
#include "platform/linux/SessionType.h"
#include "platform/posix/WindowOverlay.h"
#include "platform/linux/DBusNotifications.h"
#include "platform/linux/JsonSettingsStorage.h"
#include "platform/linux/NoScripting.h"
#include "platform/linux/NoSystemSwitcher.h"
#include "platform/linux/GammaRecoveryFile.h"
#include "platform/linux/ProcFsProcessTable.h"
#include "platform/linux/XdgUserFiles.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/x11/X11Accessibility.h"
#include "platform/x11/X11EdgeTiling.h"
#include "platform/x11/X11EventTap.h"
#include "platform/x11/X11Gamma.h"
#include "platform/x11/X11PowerAssertion.h"
#include "platform/x11/X11HotKeyService.h"
#include "platform/x11/X11KeySynth.h"
#include "platform/x11/X11KeyboardLayout.h"
#include "platform/x11/X11MouseMonitor.h"
#include "platform/x11/X11Pasteboard.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11WindowServer.h"
#include "platform/x11/X11WindowCatalog.h"
#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QCoreApplication>
#include <xcb/xcb.h>

namespace orlo {

namespace {
struct ConnectionHolder {
    std::unique_ptr<x11::XConnection> connection;
};
// The Linux platform: the X connection is a base declared before Platform, so it is
// destroyed after every port that uses it.
struct X11Platform : ConnectionHolder, Platform {};
}  // namespace

namespace x11 {

QString prepareDisplay()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return isWaylandSession()
                   ? QStringLiteral("this Wayland session offers no X11 display (XWayland), which Orlo needs.")
                   : QStringLiteral("there is no display to show on (DISPLAY is not set): start Orlo inside a desktop session.");
    // Qt gives up on a display it cannot open by aborting: try it first.
    xcb_connection_t* probe = xcb_connect(display.constData(), nullptr);
    const bool opened = !xcb_connection_has_error(probe);
    xcb_disconnect(probe);
    if (!opened) return QStringLiteral("cannot open the X display \"%1\".").arg(QString::fromLocal8Bit(display));
    // Orlo's windows must live on the X server it drives, also in a Wayland session.
    if (isWaylandSession()) qputenv("QT_QPA_PLATFORM", "xcb");
    return {};
}

std::unique_ptr<Platform> createPlatform(QString* error)
{
    auto connection = x11::XConnection::open(nullptr, error);
    if (!connection) return nullptr;
    auto platform = std::make_unique<X11Platform>();
    x11::XConnection& x = *connection;
    platform->connection = std::move(connection);
    platform->throughXWayland = isWaylandSession();
    // Before anything else: a display left dimmed by a crash or a kill gets its colours back.
    platform->gamma = std::make_unique<x11::X11Gamma>(x, GammaRecoveryFile::defaultPath());
    platform->accessibility = std::make_unique<x11::X11Accessibility>(x);
    auto layout = std::make_unique<x11::X11KeyboardLayout>(x);
    platform->hotKeys = std::make_unique<x11::X11HotKeyService>(x, *layout);
    platform->eventTaps = std::make_unique<x11::X11EventTapBackend>(x, *layout);
    platform->keyboardLayout = std::move(layout);
    platform->workspace = std::make_unique<x11::X11Workspace>(x);
    platform->screens = std::make_unique<x11::X11Screens>(x);
    platform->windowServer = std::make_unique<x11::X11WindowServer>(x);
    platform->mouseMonitor = std::make_unique<x11::X11MouseMonitor>(x);
    platform->loginItem = std::make_unique<XdgLoginItem>(XdgLoginItem::defaultPath(), QCoreApplication::applicationFilePath());
    platform->settings = std::make_unique<JsonSettingsStorage>(JsonSettingsStorage::defaultPath());
    platform->pasteboard = std::make_unique<x11::X11Pasteboard>();
    platform->keySynth = std::make_unique<x11::X11KeySynth>(x);
    platform->windowCatalog = std::make_unique<x11::X11WindowCatalog>(x, static_cast<x11::X11Workspace&>(*platform->workspace));
    platform->scripting = std::make_unique<NoScripting>();
    platform->processes = std::make_unique<ProcFsProcessTable>();
    platform->power = std::make_unique<x11::X11PowerAssertion>(x);
    platform->userFiles = std::make_unique<XdgUserFiles>(XdgUserFiles::forCurrentUser());
    platform->notifications = std::make_unique<DBusNotifications>();
    platform->edgeTiling = std::make_unique<x11::X11EdgeTiling>(x);
    platform->overlay = std::make_unique<WindowOverlay>();
    platform->systemSwitcher = std::make_unique<NoSystemSwitcher>();
    return platform;
}

}  // namespace x11
}  // namespace orlo
