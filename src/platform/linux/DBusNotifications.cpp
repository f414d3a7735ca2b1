#include "platform/linux/DBusNotifications.h"
#include "platform/linux/DesktopId.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace orlo {

namespace {
const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
}  // namespace

DBusNotifications::DBusNotifications(QObject* parent) : Notifications(parent)
{
    QDBusConnection::sessionBus().connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                                          SLOT(onActionInvoked(uint, QString)));
}

void DBusNotifications::show(const QString& title, const QString& body)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        emit unavailable();
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    // "default" is the action of a click on the notification itself.
    const QStringList actions{QStringLiteral("default"), tr("Open Settings")};
    const QVariantMap hints{{QStringLiteral("desktop-entry"), desktopId()}};
    call << QStringLiteral("Orlo") << shown_ << QStringLiteral("preferences-desktop-keyboard-shortcuts") << title << body
         << actions << hints << -1;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 10000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        const QDBusPendingReply<uint> reply = *w;
        if (reply.isError()) emit unavailable();
        else shown_ = reply.value();
        w->deleteLater();
    });
}

void DBusNotifications::withdraw()
{
    if (shown_ == 0) return;
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("CloseNotification"));
    call << shown_;
    QDBusConnection::sessionBus().asyncCall(call);
    shown_ = 0;
}

void DBusNotifications::onActionInvoked(uint id, const QString& action)
{
    Q_UNUSED(action);
    if (id != 0 && id == shown_) emit clicked();
}

}  // namespace orlo
