#include "platform/linux/ScreenSaverInhibitor.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <array>
#include <optional>

namespace orlo {

static const QString Service = QStringLiteral("org.freedesktop.ScreenSaver");
// Desktops publish the service at one of two paths.
static const std::array<QString, 2> Paths{QStringLiteral("/org/freedesktop/ScreenSaver"), QStringLiteral("/ScreenSaver")};

quint32 ScreenSaverInhibitor::inhibit(const QString& reason)
{
    const quint32 inhibition = next_++;
    waiting_.insert(inhibition, reason);
    ask(inhibition, 0);
    return inhibition;
}

void ScreenSaverInhibitor::ask(quint32 inhibition, int pathIndex)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        QMetaObject::invokeMethod(this, [this, inhibition] { onAnswer(inhibition, int(Paths.size()), nullptr); }, Qt::QueuedConnection);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Paths[pathIndex], Service, QStringLiteral("Inhibit"));
    call << QStringLiteral("Orlo") << waiting_.value(inhibition);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, inhibition, pathIndex](QDBusPendingCallWatcher* w) { onAnswer(inhibition, pathIndex, w); });
}

void ScreenSaverInhibitor::onAnswer(quint32 inhibition, int pathIndex, QDBusPendingCallWatcher* call)
{
    std::optional<quint32> cookie;
    if (call) {
        call->deleteLater();
        const QDBusPendingReply<quint32> reply = *call;
        if (!reply.isError()) cookie = reply.value();
    }
    if (!waiting_.contains(inhibition)) {
        if (cookie) uninhibit(pathIndex, *cookie);  // released while the service answered
        return;
    }
    if (!cookie && pathIndex + 1 < int(Paths.size())) {
        ask(inhibition, pathIndex + 1);
        return;
    }
    waiting_.remove(inhibition);
    if (cookie) held_.insert(inhibition, {pathIndex, *cookie});
    emit answered(inhibition, cookie.has_value());
}

void ScreenSaverInhibitor::release(quint32 inhibition)
{
    waiting_.remove(inhibition);
    const auto it = held_.constFind(inhibition);
    if (it == held_.constEnd()) return;
    uninhibit(it->pathIndex, it->value);
    held_.erase(it);
}

void ScreenSaverInhibitor::uninhibit(int pathIndex, quint32 cookie)
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Paths[pathIndex], Service, QStringLiteral("UnInhibit"));
    call << cookie;
    QDBusConnection::sessionBus().asyncCall(call);
}

}  // namespace orlo
