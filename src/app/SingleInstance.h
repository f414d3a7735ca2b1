#pragma once
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

// One Orlo per user: the first process holds a lock and listens; a later one hands the
// running Orlo a message, waits for its answer and exits.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // lockFolder: beside the user's settings, so that every Orlo of the user meets the same
    // lock whatever its environment; socketFolder: the user's runtime folder.
    SingleInstance(const QString& lockFolder, const QString& socketFolder, QObject* parent = nullptr);

    // What the running Orlo does with a message; its answer goes back to the sender.
    using Handler = std::function<QByteArray(const QByteArray& message)>;

    // True when this process is now the one Orlo; false when another holds the lock.
    bool becomePrimary(Handler handler);
    // Whether another process is the one Orlo, without becoming it.
    bool isPrimaryElsewhere();
    // Sends a message to the running Orlo and returns its answer; nothing when none answered
    // in time.
    std::optional<QByteArray> sendToPrimary(const QByteArray& message, int timeoutMs = 3000);

private:
    QString socketPath_;
    QLockFile lock_;
    QLocalServer server_;
};

}  // namespace orlo
