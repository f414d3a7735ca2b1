#include "platform/linux/ScreenSaverInhibitor.h"
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>

namespace orlo {

static const QString Service = QStringLiteral("org.freedesktop.ScreenSaver");


std::optional<quint32> ScreenSaverInhibitor::inhibit(const QString& reason)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(Service)) return std::nullopt;
    // Desktops publish the service at one of two paths.
    for (const QString& path : {QStringLiteral("/org/freedesktop/ScreenSaver"), QStringLiteral("/ScreenSaver")}) {
        QDBusInterface iface(Service, path, Service, bus);
        iface.setTimeout(2000);
        const QDBusReply<quint32> cookie = iface.call(QStringLiteral("Inhibit"), QStringLiteral("Orlo"), reason);
        if (cookie.isValid()) return cookie.value();
    }
    return std::nullopt;
}

void ScreenSaverInhibitor::uninhibit(quint32 cookie)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    for (const QString& path : {QStringLiteral("/org/freedesktop/ScreenSaver"), QStringLiteral("/ScreenSaver")}) {
        QDBusInterface iface(Service, path, Service, bus);
        iface.setTimeout(2000);
        if (iface.call(QStringLiteral("UnInhibit"), cookie).type() != QDBusMessage::ErrorMessage) return;
    }
}

}  // namespace orlo
