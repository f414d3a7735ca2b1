#include "platform/linux/LogindInhibitor.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace orlo {

quint32 LogindInhibitor::inhibit(const QString& what, const QString& why)
{
    const quint32 lock = next_++;
    waiting_ << lock;
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) {
        QMetaObject::invokeMethod(this, [this, lock] { onAnswer(lock, nullptr); }, Qt::QueuedConnection);
        return lock;
    }
    QDBusMessage ask = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                                                      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    ask << what << QStringLiteral("Orlo") << why << QStringLiteral("block");
    auto* call = new QDBusPendingCallWatcher(bus.asyncCall(ask), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, lock](QDBusPendingCallWatcher* c) { onAnswer(lock, c); });
    return lock;
}

void LogindInhibitor::onAnswer(quint32 lock, QDBusPendingCallWatcher* call)
{
    QDBusUnixFileDescriptor fd;
    if (call) {
        call->deleteLater();
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *call;
        if (!reply.isError()) fd = reply.value();
    }
    if (!waiting_.remove(lock)) return;  // released meanwhile: the descriptor closes here
    if (fd.isValid()) held_.insert(lock, fd);
    emit answered(lock, fd.isValid());
}

void LogindInhibitor::release(quint32 lock)
{
    waiting_.remove(lock);
    held_.remove(lock);
}

}  // namespace orlo
