#include "platform/linux/PortalHotKeys.h"
#include "platform/linux/PortalRequest.h"
#include "platform/linux/XkbKeyNames.h"
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QLoggingCategory>
#include <utility>

namespace orlo::portal {
// One shortcut as the portal takes it: its id and its properties.
struct Shortcut {
    QString id;
    QVariantMap properties;
};
}  // namespace orlo::portal
Q_DECLARE_METATYPE(orlo::portal::Shortcut)

namespace orlo::portal {
QDBusArgument& operator<<(QDBusArgument& out, const Shortcut& s)
{
    out.beginStructure();
    out << s.id << s.properties;
    out.endStructure();
    return out;
}
const QDBusArgument& operator>>(const QDBusArgument& in, Shortcut& s)
{
    in.beginStructure();
    in >> s.id >> s.properties;
    in.endStructure();
    return in;
}
}  // namespace orlo::portal

namespace orlo {

Q_LOGGING_CATEGORY(lcPortalKeys, "orlo.hotkeys.portal", QtWarningMsg)

namespace {
const QString interface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
// The names of the desktop's shortcut descriptions.
const ModifierNames portalModifiers{QStringLiteral("CTRL"), QStringLiteral("ALT"), QStringLiteral("SHIFT"),
                                    QStringLiteral("LOGO")};
constexpr int callMs = 3000;

QString pathText(const QVariant& value)
{
    // Older portals answer the session handle as a string, newer ones as an object path.
    return value.canConvert<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path() : value.toString();
}
}  // namespace

bool PortalHotKeys::offeredOn(const QDBusConnection& bus)
{
    QDBusMessage get = QDBusMessage::createMethodCall(PortalRequest::Service, PortalRequest::Path,
                                                      QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << interface << QStringLiteral("version");
    return bus.call(get, QDBus::Block, callMs).type() == QDBusMessage::ReplyMessage;
}

PortalHotKeys::PortalHotKeys(const QDBusConnection& bus, KeyboardLayout& layout, QObject* parent)
    : HotKeyService(parent), bus_(bus), layout_(layout)
{
    qDBusRegisterMetaType<portal::Shortcut>();
    qDBusRegisterMetaType<QList<portal::Shortcut>>();
    bindSoon_.setSingleShot(true);
    bindSoon_.setInterval(0);
    connect(&bindSoon_, &QTimer::timeout, this, &PortalHotKeys::rebind);
    bus_.connect(PortalRequest::Service, PortalRequest::Path, interface, QStringLiteral("Activated"), this,
                 SLOT(onActivated(QDBusMessage)));
}

PortalHotKeys::~PortalHotKeys() { closeSession(std::exchange(session_, {})); }

bool PortalHotKeys::registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers)
{
    const auto trigger = xkbShortcutText(keyCode, carbonModifiers, layout_, portalModifiers);
    if (!trigger || shortcuts_.contains(id)) return false;
    shortcuts_.insert(id, *trigger);
    bindSoon_.start();
    return true;
}

void PortalHotKeys::unregisterHotKey(quint32 id)
{
    if (shortcuts_.remove(id)) bindSoon_.start();
}

void PortalHotKeys::closeSession(const QString& session)
{
    if (session.isEmpty()) return;
    const QDBusMessage close = QDBusMessage::createMethodCall(PortalRequest::Service, session,
                                                              QStringLiteral("org.freedesktop.portal.Session"),
                                                              QStringLiteral("Close"));
    // Not waited for: the portal also frees a session's keys when its program leaves the bus.
    bus_.asyncCall(close);
}

void PortalHotKeys::rebind()
{
    closeSession(std::exchange(session_, {}));
    const int generation = ++generation_;
    if (shortcuts_.isEmpty()) return;
    QVariantMap options{{QStringLiteral("session_handle_token"), QStringLiteral("orlo%1").arg(generation)}};
    auto* request = PortalRequest::call(bus_, interface, QStringLiteral("CreateSession"), {options}, this);
    connect(request, &PortalRequest::answered, this, [this, generation](uint response, const QVariantMap& results) {
        const QString session = pathText(results.value(QStringLiteral("session_handle")));
        if (response != 0 || session.isEmpty()) {
            qCWarning(lcPortalKeys, "the portal would not open a shortcuts session (answer %u)", response);
            return;
        }
        bindIn(session, generation);
    });
}

void PortalHotKeys::bindIn(const QString& session, int generation)
{
    if (generation != generation_) {
        closeSession(session);  // Orlo's keys changed meanwhile: a newer session binds them
        return;
    }
    session_ = session;
    QList<portal::Shortcut> shortcuts;
    QStringList seen;
    for (const QString& trigger : std::as_const(shortcuts_)) {
        if (seen.contains(trigger)) continue;
        seen << trigger;
        shortcuts << portal::Shortcut{trigger, {{QStringLiteral("description"), QStringLiteral("Orlo: %1").arg(trigger)},
                                                {QStringLiteral("preferred_trigger"), trigger}}};
    }
    auto* request = PortalRequest::call(bus_, interface, QStringLiteral("BindShortcuts"),
                                        {QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(shortcuts),
                                         QString(), QVariantMap()},
                                        this);
    connect(request, &PortalRequest::answered, this, [this, generation](uint response, const QVariantMap&) {
        if (generation != generation_) return;
        if (response != 0) {
            qCWarning(lcPortalKeys, "the portal did not bind Orlo's shortcuts (answer %u)", response);
            return;
        }
        emit bound();
    });
}

void PortalHotKeys::onActivated(const QDBusMessage& signal)
{
    // The session and the shortcut; a time and options follow.
    const QVariantList arguments = signal.arguments();
    if (arguments.size() < 2 || pathText(arguments[0]) != session_) return;
    const QString shortcut = arguments[1].toString();
    for (auto it = shortcuts_.cbegin(); it != shortcuts_.cend(); ++it)
        if (it.value() == shortcut) emit pressed(it.key());
}

}  // namespace orlo
