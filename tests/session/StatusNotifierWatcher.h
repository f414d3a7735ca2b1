#pragma once
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QStringList>

namespace orlo::testing {

// The StatusNotifierWatcher of a desktop whose panel shows StatusNotifierItems rather than
// a system tray (KDE Plasma, GNOME with the AppIndicator extension), on a session's bus.
class StatusNotifierWatcher : public QObject {
    Q_OBJECT
public:
    explicit StatusNotifierWatcher(const QString& busAddress);
    ~StatusNotifierWatcher() override;
    bool isRegistered() const { return registered_; }
    QStringList items;

private:
    QDBusConnection bus_;
    bool registered_ = false;
};

class StatusNotifierWatcherAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
public:
    explicit StatusNotifierWatcherAdaptor(StatusNotifierWatcher* watcher)
        : QDBusAbstractAdaptor(watcher), watcher_(watcher)
    {
    }
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }
    QStringList registeredItems() const { return watcher_->items; }

public slots:
    void RegisterStatusNotifierItem(const QString& service);
    void RegisterStatusNotifierHost(const QString&) {}

signals:
    void StatusNotifierItemRegistered(const QString& service);

private:
    StatusNotifierWatcher* watcher_;
};

}  // namespace orlo::testing
