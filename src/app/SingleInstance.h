#pragma once
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <memory>

namespace orlo {

// One Orlo per user: the first process holds a lock and listens; a later one hands the
// running Orlo a message and exits.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // lockFolder: beside the user's settings, so that every Orlo of the user meets the same
    // lock whatever its environment; socketFolder: the user's runtime folder.
    SingleInstance(const QString& lockFolder, const QString& socketFolder, QObject* parent = nullptr);

    // True when this process is now the one Orlo; false when another holds the lock.
    bool becomePrimary();
    // Sends a message to the running Orlo; false when none answered in time.
    bool sendToPrimary(const QByteArray& message, int timeoutMs = 3000);

signals:
    void messageReceived(const QByteArray& message);

private:
    QString socketPath_;
    QLockFile lock_;
    QLocalServer server_;
};

}  // namespace orlo
