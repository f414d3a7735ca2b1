#include "clipboard/ExcludedApp.h"
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace orlo {

QByteArray ExcludedApp::toJson(const QList<ExcludedApp>& apps)
{
    QJsonArray array;
    for (const ExcludedApp& app : apps)
        array.append(QJsonObject{{QStringLiteral("bundleID"), app.bundleID}, {QStringLiteral("name"), app.name}});
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<ExcludedApp>> ExcludedApp::fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) return std::nullopt;
    QList<ExcludedApp> apps;
    for (const QJsonValue& value : doc.array()) {
        const QJsonObject o = value.toObject();
        const QJsonValue id = o.value(QStringLiteral("bundleID")), name = o.value(QStringLiteral("name"));
        if (!value.isObject() || !id.isString() || !name.isString()) return std::nullopt;
        apps.append({id.toString(), name.toString()});
    }
    return apps;
}

}  // namespace orlo
