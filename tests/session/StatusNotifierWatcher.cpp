#include "StatusNotifierWatcher.h"

namespace orlo::testing {

StatusNotifierWatcher::StatusNotifierWatcher(const QString& busAddress)
    : bus_(QDBusConnection::connectToBus(busAddress, QStringLiteral("watcher-") + busAddress))
{
    new StatusNotifierWatcherAdaptor(this);
    registered_ = bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this)
        && bus_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
}

StatusNotifierWatcher::~StatusNotifierWatcher()
{
    bus_.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    QDBusConnection::disconnectFromBus(bus_.name());
}

void StatusNotifierWatcherAdaptor::RegisterStatusNotifierItem(const QString& service)
{
    watcher_->items << service;
    emit StatusNotifierItemRegistered(service);
}

}  // namespace orlo::testing
