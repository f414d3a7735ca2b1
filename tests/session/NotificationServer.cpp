#include "NotificationServer.h"
#include <QDBusMessage>

namespace orlo::testing {

NotificationServer::NotificationServer(const QString& busAddress)
    : bus_(QDBusConnection::connectToBus(busAddress, QStringLiteral("notifications-") + busAddress))
{
    new NotificationAdaptor(this);
    registered_ = bus_.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this)
        && bus_.registerService(QStringLiteral("org.freedesktop.Notifications"));
}

NotificationServer::~NotificationServer()
{
    bus_.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
    QDBusConnection::disconnectFromBus(bus_.name());
}

void NotificationServer::click(uint id)
{
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                     QStringLiteral("org.freedesktop.Notifications"),
                                                     QStringLiteral("ActionInvoked"));
    signal << id << QStringLiteral("default");
    bus_.send(signal);
}

uint NotificationAdaptor::Notify(const QString&, uint, const QString&, const QString& summary, const QString& body,
                                 const QStringList& actions, const QVariantMap&, int)
{
    const uint id = uint(server_->shown.size() + 1);
    server_->shown.append({id, summary, body, actions});
    return id;
}

}  // namespace orlo::testing
