#include "platform/wayland/WaylandCapabilities.h"
#include "platform/linux/PortalHotKeys.h"
#include "platform/wayland/SwayConfigKeys.h"
#include "platform/wayland/WaylandConnection.h"
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QStringList>

namespace orlo::wayland {

namespace {
bool hasBusName(const QString& name)
{
    QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
    return bus && bus->isServiceRegistered(name).value();
}

}  // namespace

WaylandCapabilities WaylandCapabilities::probe(const WaylandConnection& connection)
{
    WaylandCapabilities c;
    c.extDataControl = connection.offers("ext_data_control_manager_v1");
    c.wlrDataControl = connection.offers("zwlr_data_control_manager_v1");
    c.virtualKeyboard = connection.offers("zwp_virtual_keyboard_manager_v1");
    c.foreignToplevels = connection.offers("zwlr_foreign_toplevel_manager_v1");
    c.layerShell = connection.offers("zwlr_layer_shell_v1");
    c.kwinFakeInput = connection.offers("org_kde_kwin_fake_input");
    c.kwinScripting = hasBusName(QStringLiteral("org.kde.KWin"));
    c.kdeGlobalShortcuts = hasBusName(QStringLiteral("org.kde.kglobalaccel"));
    c.portalGlobalShortcuts = PortalHotKeys::offeredOn(QDBusConnection::sessionBus());
    c.swayConfigKeys = SwayConfigKeys::offered();
    return c;
}

QString WaylandCapabilities::summary() const
{
    QStringList found;
    auto add = [&](bool present, const char* name) {
        if (present) found << QString::fromLatin1(name);
    };
    add(extDataControl, "ext-data-control");
    add(wlrDataControl, "wlr-data-control");
    add(virtualKeyboard, "virtual-keyboard");
    add(foreignToplevels, "foreign-toplevel");
    add(layerShell, "layer-shell");
    add(kwinFakeInput, "kwin-fake-input");
    add(kwinScripting, "kwin-scripting");
    add(kdeGlobalShortcuts, "kglobalaccel");
    add(portalGlobalShortcuts, "portal-global-shortcuts");
    add(swayConfigKeys, "sway-ipc");
    return found.isEmpty() ? QStringLiteral("none") : found.join(QLatin1Char(' '));
}

}  // namespace orlo::wayland
