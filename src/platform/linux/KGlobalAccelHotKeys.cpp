#include "platform/linux/KGlobalAccelHotKeys.h"
#include "platform/linux/DesktopId.h"
#include "platform/linux/QtKeys.h"
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QKeySequence>

namespace orlo {

namespace {
const QString accelService = QStringLiteral("org.kde.kglobalaccel");
const QString accelPath = QStringLiteral("/kglobalaccel");
const QString accelInterface = QStringLiteral("org.kde.KGlobalAccel");
// setShortcut's flags: the keys are in use now, and not those the service may have saved.
constexpr uint setPresent = 2, noAutoloading = 4;
constexpr int callMs = 3000;

QDBusMessage call(const QDBusConnection& bus, const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(accelService, accelPath, accelInterface, method);
    message.setArguments(arguments);
    return bus.call(message, QDBus::Block, callMs);
}
}  // namespace

bool KGlobalAccelHotKeys::offeredOn(const QDBusConnection& bus)
{
    return bus.interface() && bus.interface()->isServiceRegistered(accelService);
}

KGlobalAccelHotKeys::KGlobalAccelHotKeys(const QDBusConnection& bus, KeyboardLayout& layout, QObject* parent)
    : HotKeyService(parent), bus_(bus), layout_(layout), component_(desktopId())
{
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    removeLeftovers();
    // The component's object exists once it has an action; its name is KGlobalAccel's to make.
    call(bus_, QStringLiteral("doRegister"), {actionId(QStringLiteral("orlo-present"))});
    const QDBusReply<QDBusObjectPath> object = call(bus_, QStringLiteral("getComponent"), {component_});
    removeAction(QStringLiteral("orlo-present"));
    if (object.isValid())
        bus_.connect(accelService, object.value().path(), QStringLiteral("org.kde.kglobalaccel.Component"),
                     QStringLiteral("globalShortcutPressed"), this, SLOT(onPressed(QString, QString, qlonglong)));
}

KGlobalAccelHotKeys::~KGlobalAccelHotKeys()
{
    for (const QString& action : std::as_const(actions_)) removeAction(action);
}

QString KGlobalAccelHotKeys::actionName(int qtKeys) { return QKeySequence(qtKeys).toString(QKeySequence::PortableText); }

QStringList KGlobalAccelHotKeys::actionId(const QString& action) const
{
    // Component and action, each by its stable name and by the name shown to the user.
    return {component_, action, QStringLiteral("Orlo"), QStringLiteral("Orlo: %1").arg(action)};
}

void KGlobalAccelHotKeys::removeAction(const QString& action)
{
    call(bus_, QStringLiteral("unregister"), {component_, action});
}

void KGlobalAccelHotKeys::removeLeftovers()
{
    const QDBusMessage reply = call(bus_, QStringLiteral("allActionsForComponent"), {QStringList{component_}});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return;
    const auto actions = qdbus_cast<QList<QStringList>>(reply.arguments().first());
    for (const QStringList& action : actions)
        if (action.size() > 1) removeAction(action[1]);
}

bool KGlobalAccelHotKeys::registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers)
{
    const auto keys = qtKeyCombination(keyCode, carbonModifiers, layout_);
    if (!keys || actions_.contains(id)) return false;
    const QString action = actionName(*keys);
    const QStringList ids = actionId(action);
    call(bus_, QStringLiteral("doRegister"), {ids});
    const QDBusReply<QList<int>> set = call(bus_, QStringLiteral("setShortcut"),
                                            {ids, QVariant::fromValue(QList<int>{*keys}), setPresent | noAutoloading});
    // The service gives back the keys it set: none when another component holds them.
    if (!set.isValid() || !set.value().contains(*keys)) {
        removeAction(action);
        return false;
    }
    actions_.insert(id, action);
    return true;
}

void KGlobalAccelHotKeys::unregisterHotKey(quint32 id)
{
    if (const QString action = actions_.take(id); !action.isEmpty()) removeAction(action);
}

bool KGlobalAccelHotKeys::isHeldByAnotherApp(quint32 keyCode, quint32 carbonModifiers)
{
    const auto keys = qtKeyCombination(keyCode, carbonModifiers, layout_);
    if (!keys) return false;
    const QDBusReply<bool> available = call(bus_, QStringLiteral("isGlobalShortcutAvailable"), {*keys, component_});
    return available.isValid() && !available.value();
}

void KGlobalAccelHotKeys::onPressed(const QString& component, const QString& action, qlonglong)
{
    if (component != component_) return;
    for (auto it = actions_.cbegin(); it != actions_.cend(); ++it)
        if (it.value() == action) emit pressed(it.key());
}

}  // namespace orlo
