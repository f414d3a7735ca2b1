#pragma once
#include <QObject>
#include <QString>

namespace orlo {

// Desktop notifications. Orlo shows at most one at a time; a new one replaces the last.
class Notifications : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Shows a notification; clicked() follows when the user clicks it, unavailable() when no
    // notification service could show it.
    virtual void show(const QString& title, const QString& body) = 0;
    // Takes the notification shown last away, when it no longer holds.
    virtual void withdraw() = 0;
signals:
    void clicked();
    void unavailable();
};

}  // namespace orlo
