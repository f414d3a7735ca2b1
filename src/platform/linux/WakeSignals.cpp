#include "platform/linux/WakeSignals.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>
#include <unistd.h>

namespace orlo {

Q_LOGGING_CATEGORY(lcWake, "orlo.wake", QtWarningMsg)

static const QString Login = QStringLiteral("org.freedesktop.login1");
static const QString LoginPath = QStringLiteral("/org/freedesktop/login1");

// Signals are matched by interface and path, not by sender: a name lookup would wait for the
// bus, and a stray signal costs no more than one reapplied gamma.
WakeSignals::WakeSignals(QObject* parent) : QObject(parent)
{
    QDBusConnection system = QDBusConnection::systemBus();
    if (system.isConnected()) {
        system.connect({}, LoginPath, Login + QStringLiteral(".Manager"), QStringLiteral("PrepareForSleep"), this,
                       SLOT(onPrepareForSleep(bool)));
        watchOwnSession();
    }
    QDBusConnection session = QDBusConnection::sessionBus();
    if (session.isConnected())
        for (const QString& path : {QStringLiteral("/org/freedesktop/ScreenSaver"), QStringLiteral("/ScreenSaver")})
            session.connect({}, path, QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("ActiveChanged"), this,
                            SLOT(onScreenSaverActiveChanged(bool)));
}

void WakeSignals::watchOwnSession()
{
    const QString id = qEnvironmentVariable("XDG_SESSION_ID");
    QDBusMessage ask = id.isEmpty()
        ? QDBusMessage::createMethodCall(Login, LoginPath, Login + QStringLiteral(".Manager"), QStringLiteral("GetSessionByPID"))
        : QDBusMessage::createMethodCall(Login, LoginPath, Login + QStringLiteral(".Manager"), QStringLiteral("GetSession"));
    ask << (id.isEmpty() ? QVariant::fromValue(uint(::getpid())) : QVariant(id));
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(ask), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &WakeSignals::onOwnSession);
}

void WakeSignals::onOwnSession(QDBusPendingCallWatcher* call)
{
    call->deleteLater();
    const QDBusPendingReply<QDBusObjectPath> reply = *call;
    if (reply.isError()) return;
    QDBusConnection::systemBus().connect({}, reply.value().path(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                         QStringLiteral("PropertiesChanged"), this,
                                         SLOT(onSessionPropertiesChanged(QString, QVariantMap, QStringList)));
    qCDebug(lcWake, "watching login session %s", qPrintable(reply.value().path()));
}

void WakeSignals::onPrepareForSleep(bool sleeping)
{
    if (!sleeping) emit woke();
}

void WakeSignals::onSessionPropertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList&)
{
    if (interface == Login + QStringLiteral(".Session") && changed.value(QStringLiteral("Active")).toBool()) emit woke();
}

void WakeSignals::onScreenSaverActiveChanged(bool active)
{
    if (!active) emit woke();
}

}  // namespace orlo
