#pragma once
#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

namespace orlo {

// One call to the desktop portal that answers later: the portal returns a request object at
// once and signals the answer on it. The answer's signal is watched before the call is made,
// at the path the portal will use, so a quick answer is not missed. Deletes itself once
// answered, or when the call itself fails (as answer 2, "ended otherwise").
class PortalRequest : public QObject {
    Q_OBJECT
public:
    static inline const QString Service = QStringLiteral("org.freedesktop.portal.Desktop");
    static inline const QString Path = QStringLiteral("/org/freedesktop/portal/desktop");

    // Calls method of interface on the portal; the arguments' options (the last one, a map)
    // get the handle token that names the request.
    static PortalRequest* call(const QDBusConnection& bus, const QString& interface, const QString& method,
                               QVariantList arguments, QObject* parent);

signals:
    // 0 granted, 1 cancelled by the user, 2 ended otherwise.
    void answered(uint response, const QVariantMap& results);

private slots:
    void onResponse(uint response, const QVariantMap& results);

private:
    PortalRequest(const QDBusConnection& bus, QObject* parent) : QObject(parent), bus_(bus) {}
    void fail();

    QDBusConnection bus_;
    QString path_;
};

}  // namespace orlo
