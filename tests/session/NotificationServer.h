#pragma once
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QStringList>
#include <QVariantMap>

namespace orlo::testing {

// A freedesktop notification service on a session's bus that keeps what it is asked to
// show, and can click a notification as the user would.
class NotificationServer : public QObject {
    Q_OBJECT
public:
    explicit NotificationServer(const QString& busAddress);
    ~NotificationServer() override;
    bool isRegistered() const { return registered_; }

    struct Shown {
        uint id;
        QString summary;
        QString body;
        QStringList actions;
    };
    QList<Shown> shown;
    QList<uint> closed;  // ids Orlo took away
    // The user clicks the notification (its default action).
    void click(uint id);

private:
    friend class NotificationAdaptor;
    QDBusConnection bus_;
    bool registered_ = false;
};

class NotificationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    explicit NotificationAdaptor(NotificationServer* server) : QDBusAbstractAdaptor(server), server_(server) {}

public slots:
    uint Notify(const QString& app, uint replaces, const QString& icon, const QString& summary, const QString& body,
                const QStringList& actions, const QVariantMap& hints, int timeout);
    QStringList GetCapabilities() { return {QStringLiteral("actions"), QStringLiteral("body")}; }
    void CloseNotification(uint id) { server_->closed << id; }
    QString GetServerInformation(QString& vendor, QString& version, QString& protocolVersion)
    {
        vendor = QStringLiteral("Orlo tests");
        version = QStringLiteral("1");
        protocolVersion = QStringLiteral("1.2");
        return QStringLiteral("test notifications");
    }

signals:
    void ActionInvoked(uint id, const QString& action);

private:
    NotificationServer* server_;
};

}  // namespace orlo::testing
