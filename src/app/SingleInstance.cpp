#include "app/SingleInstance.h"
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QThread>

namespace orlo {

SingleInstance::SingleInstance(const QString& lockFolder, const QString& socketFolder, QObject* parent)
    : QObject(parent), socketPath_(QDir(socketFolder).filePath(QStringLiteral("orlo.sock"))),
      lock_(QDir(lockFolder).filePath(QStringLiteral("orlo.lock")))
{
    QDir().mkpath(lockFolder);
    QDir().mkpath(socketFolder);
    lock_.setStaleLockTime(0);  // a lock is stale only when its process is gone
}

bool SingleInstance::isPrimaryElsewhere()
{
    if (!lock_.tryLock(0)) return true;
    lock_.unlock();
    return false;
}

bool SingleInstance::becomePrimary(Handler handler)
{
    if (!lock_.tryLock(0)) return false;
    QLocalServer::removeServer(socketPath_);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    server_.listen(socketPath_);
    connect(&server_, &QLocalServer::newConnection, this, [this, handler = std::move(handler)] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [handler, socket] {
                if (!socket->canReadLine()) return;
                const QByteArray answer = handler(socket->readLine().trimmed());
                socket->write(QByteArray(answer).replace('\n', ' ') + '\n');
                socket->flush();
            });
        }
    });
    return true;
}

std::optional<QByteArray> SingleInstance::sendToPrimary(const QByteArray& message, int timeoutMs)
{
    // The running Orlo may still be starting up: retry until it listens.
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        QLocalSocket socket;
        socket.connectToServer(socketPath_);
        if (socket.waitForConnected(200)) {
            socket.write(message + '\n');
            socket.flush();
            while (!socket.canReadLine())
                if (!socket.waitForReadyRead(int(qMax<qint64>(100, deadline.remainingTime())))) return std::nullopt;
            return socket.readLine().trimmed();
        }
        QThread::msleep(50);
    }
    return std::nullopt;
}

}  // namespace orlo
