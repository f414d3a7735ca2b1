#pragma once
#include "platform/Notifications.h"
#include <memory>

namespace orlo::mac {

// Notifications of the UserNotifications framework. They need Orlo.app's bundle: a build run
// outside it reports every notification as unavailable.
class MacNotifications : public Notifications {
    Q_OBJECT
public:
    explicit MacNotifications(QObject* parent = nullptr);
    ~MacNotifications() override;
    void show(const QString& title, const QString& body) override;
    void withdraw() override;

private:
    struct Delegate;
    std::unique_ptr<Delegate> delegate_;
};

}  // namespace orlo::mac
