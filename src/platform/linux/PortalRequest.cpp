#include "platform/linux/PortalRequest.h"
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace orlo {

PortalRequest* PortalRequest::call(const QDBusConnection& bus, const QString& interface, const QString& method,
                                   QVariantList arguments, QObject* parent)
{
    static uint count = 0;
    auto* request = new PortalRequest(bus, parent);
    const QString token = QStringLiteral("orlo%1").arg(++count);
    // The portal names the request after the caller's unique name and the token.
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    request->path_ = Path + QStringLiteral("/request/%1/%2").arg(sender, token);
    request->bus_.connect(Service, request->path_, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"),
                request, SLOT(onResponse(uint, QVariantMap)));
    QVariantMap options = arguments.isEmpty() ? QVariantMap() : arguments.takeLast().toMap();
    options.insert(QStringLiteral("handle_token"), token);
    arguments << options;
    QDBusMessage message = QDBusMessage::createMethodCall(Service, Path, interface, method);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), request);
    connect(watcher, &QDBusPendingCallWatcher::finished, request, [request, watcher] {
        if (watcher->isError()) request->fail();
        watcher->deleteLater();
    });
    return request;
}

void PortalRequest::onResponse(uint response, const QVariantMap& results)
{
    bus_.disconnect(Service, path_, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"), this,
                    SLOT(onResponse(uint, QVariantMap)));
    emit answered(response, results);
    deleteLater();
}

void PortalRequest::fail() { onResponse(2, {}); }

}  // namespace orlo
