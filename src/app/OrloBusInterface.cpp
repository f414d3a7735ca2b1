#include "app/OrloBusInterface.h"
#include "app/AppIdentity.h"
#include "app/AppModel.h"
#include "app/OrloApp.h"
#include "app/OrloCommands.h"
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>

namespace orlo {

OrloBusInterface::OrloBusInterface(QObject* carrier, OrloApp& app, AppModel& model)
    : QDBusAbstractAdaptor(carrier), app_(app), model_(model)
{
    connect(&model_, &AppModel::revisionChanged, this, &OrloBusInterface::announceSwitches);
}

QObject* OrloBusInterface::publish(OrloApp& app, AppModel& model)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qWarning("Orlo: no session bus: Orlo cannot be driven over D-Bus");
        return nullptr;
    }
    auto carrier = std::make_unique<QObject>();
    new OrloBusInterface(carrier.get(), app, model);
    if (!bus.registerObject(QString::fromLatin1(Path), carrier.get())) return nullptr;
    if (!bus.registerService(QString::fromLatin1(AppId))) {
        qWarning("Orlo: the bus name %s is taken: %s", AppId, qPrintable(bus.lastError().message()));
        bus.unregisterObject(QString::fromLatin1(Path));
        return nullptr;
    }
    return carrier.release();
}

QString OrloBusInterface::version() const { return QString::fromLatin1(AppVersion); }

bool OrloBusInterface::enabled(const char* module) const
{
    const OrloModule* m = model_.module(QString::fromLatin1(module));
    return m && m->isEnabled();
}

void OrloBusInterface::setEnabled(const char* module, bool on)
{
    if (OrloModule* m = model_.module(QString::fromLatin1(module)); m && m->isEnabled() != on) model_.setModuleEnabled(*m, on);
}

void OrloBusInterface::OpenSettings(const QString& page, const QDBusMessage& message)
{
    QStringList words{QStringLiteral("settings")};
    if (!page.isEmpty()) words << page;
    perform(words, message);
}

void OrloBusInterface::perform(const QStringList& words, const QDBusMessage& message)
{
    const QString wrong = OrloCommands::check(words);
    const QString why = wrong.isEmpty() ? app_.perform(words) : wrong;
    if (why.isEmpty()) return;
    message.setDelayedReply(true);
    QDBusConnection::sessionBus().send(
        message.createErrorReply(wrong.isEmpty() ? QDBusError::Failed : QDBusError::InvalidArgs, why));
}

void OrloBusInterface::announceSwitches()
{
    // Tools that watch the switches learn of a change without asking again.
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(Path), QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("PropertiesChanged"));
    const QVariantMap changed{{QStringLiteral("SystemEnabled"), systemEnabled()},
                              {QStringLiteral("WindowsEnabled"), windowsEnabled()},
                              {QStringLiteral("SwitcherEnabled"), switcherEnabled()},
                              {QStringLiteral("ClipboardEnabled"), clipboardEnabled()}};
    signal << QString::fromLatin1(AppId) << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

}  // namespace orlo
