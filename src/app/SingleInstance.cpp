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

bool SingleInstance::becomePrimary()
{
    if (!lock_.tryLock(0)) return false;
    QLocalServer::removeServer(socketPath_);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    server_.listen(socketPath_);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                const QByteArray line = socket->readLine().trimmed();
                if (!line.isEmpty()) emit messageReceived(line);
                socket->write("ok\n");
                socket->flush();
            });
        }
    });
    return true;
}

bool SingleInstance::sendToPrimary(const QByteArray& message, int timeoutMs)
{
    // The running Orlo may still be starting up: retry until it listens.
    QDeadlineTimer deadline(timeoutMs);
    while (!deadline.hasExpired()) {
        QLocalSocket socket;
        socket.connectToServer(socketPath_);
        if (socket.waitForConnected(200)) {
            socket.write(message + '\n');
            socket.flush();
            return socket.waitForReadyRead(int(qMax<qint64>(100, deadline.remainingTime())));
        }
        QThread::msleep(50);
    }
    return false;
}

}  // namespace orlo
