#pragma once
#include "platform/Notifications.h"

namespace orlo {

// Notifications through the freedesktop notification service on the session bus.
class DBusNotifications : public Notifications {
    Q_OBJECT
public:
    explicit DBusNotifications(QObject* parent = nullptr);
    void show(const QString& title, const QString& body) override;
    void withdraw() override;

private slots:
    void onActionInvoked(uint id, const QString& action);

private:
    uint shown_ = 0;
};

}  // namespace orlo
