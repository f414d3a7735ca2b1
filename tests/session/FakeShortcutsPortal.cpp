#include "FakeShortcutsPortal.h"
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QTimer>

namespace orlo::testing {

QDBusArgument& operator<<(QDBusArgument& out, const FakeShortcutsPortal::Shortcut& s)
{
    out.beginStructure();
    out << s.id << s.properties;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, FakeShortcutsPortal::Shortcut& s)
{
    in.beginStructure();
    in >> s.id >> s.properties;
    in.endStructure();
    return in;
}

namespace {
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

QString senderPart(const QDBusMessage& call) { return call.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_')); }
}  // namespace

FakeShortcutsPortal::FakeShortcutsPortal(const QString& busAddress)
    : name_(QStringLiteral("fake-shortcuts-portal")), bus_(QDBusConnection::connectToBus(busAddress, name_))
{
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    new FakeShortcutsAdaptor(this);
    registered_ = bus_.isConnected() && bus_.registerObject(portalPath, this)
                  && bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
}

FakeShortcutsPortal::~FakeShortcutsPortal() { QDBusConnection::disconnectFromBus(name_); }

QDBusObjectPath FakeShortcutsPortal::answer(const QDBusMessage& call, const QVariantMap& options, uint response,
                                            const QVariantMap& results)
{
    const QString path = portalPath + QStringLiteral("/request/%1/%2").arg(senderPart(call), options.value("handle_token").toString());
    QTimer::singleShot(0, this, [this, path, response, results] {
        QDBusMessage signal = QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        signal << response << results;
        bus_.send(signal);
    });
    return QDBusObjectPath(path);
}

QDBusObjectPath FakeShortcutsPortal::createSession(const QVariantMap& options, const QDBusMessage& call)
{
    const QString session = portalPath + QStringLiteral("/session/%1/%2").arg(senderPart(call), options.value("session_handle_token").toString());
    bus_.registerObject(session, new FakePortalSession(this, session), QDBusConnection::ExportAllSlots);
    bound.insert(session, {});
    return answer(call, options, 0, {{QStringLiteral("session_handle"), session}});
}

QDBusObjectPath FakeShortcutsPortal::bindShortcuts(const QDBusObjectPath& session, const QList<Shortcut>& shortcuts,
                                                   const QVariantMap& options, const QDBusMessage& call)
{
    if (std::exchange(cancelNextBinding, false)) return answer(call, options, 1, {});
    QStringList keys;
    for (const Shortcut& s : shortcuts) keys << s.properties.value(QStringLiteral("preferred_trigger")).toString();
    bound[session.path()] = keys;
    return answer(call, options, 0, {});
}

void FakeShortcutsPortal::close(const QString& session)
{
    bound.remove(session);
    closed << session;
    bus_.unregisterObject(session);
}

void FakeShortcutsPortal::press(const QString& session, const QString& shortcut)
{
    QDBusMessage signal = QDBusMessage::createSignal(portalPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                                     QStringLiteral("Activated"));
    signal << QVariant::fromValue(QDBusObjectPath(session)) << shortcut << qulonglong(0) << QVariantMap();
    bus_.send(signal);
}

}  // namespace orlo::testing
