#include "platform/linux/JsonSettingsStorage.h"
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>
#include <cmath>

namespace orlo {

static const QString DataKey = QStringLiteral("$data");

JsonSettingsStorage::JsonSettingsStorage(QString path) : path_(std::move(path)) {}

QString JsonSettingsStorage::defaultPath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("Orlo/settings.json"));
}

static QVariant fromJson(const QJsonValue& v)
{
    switch (v.type()) {
    case QJsonValue::Bool: return v.toBool();
    case QJsonValue::Double: {
        const double d = v.toDouble();
        const qint64 i = v.toInteger(std::numeric_limits<qint64>::min());
        if (i != std::numeric_limits<qint64>::min() && double(i) == d) return i;
        return d;
    }
    case QJsonValue::String: return v.toString();
    case QJsonValue::Array: {
        QVariantList list;
        for (const QJsonValue& item : v.toArray()) list << fromJson(item);
        return list;
    }
    case QJsonValue::Object: {
        const QJsonObject o = v.toObject();
        if (o.size() == 1 && o.value(DataKey).isString())
            return QByteArray::fromBase64(o.value(DataKey).toString().toLatin1());
        QVariantMap map;
        for (auto it = o.begin(); it != o.end(); ++it) map.insert(it.key(), fromJson(it.value()));
        return map;
    }
    default: return {};
    }
}

static QJsonValue toJson(const QVariant& v)
{
    switch (v.typeId()) {
    case QMetaType::Bool: return v.toBool();
    case QMetaType::Int: case QMetaType::LongLong: case QMetaType::UInt: return v.toLongLong();
    case QMetaType::Double: return v.toDouble();
    case QMetaType::QString: return v.toString();
    case QMetaType::QByteArray: return QJsonObject{{DataKey, QString::fromLatin1(v.toByteArray().toBase64())}};
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        QJsonArray array;
        for (const QVariant& item : v.toList()) array.append(toJson(item));
        return array;
    }
    case QMetaType::QVariantMap: {
        QJsonObject o;
        const QVariantMap map = v.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) o.insert(it.key(), toJson(it.value()));
        return o;
    }
    default: return QJsonValue::fromVariant(v);
    }
}

SettingsStorage::Loaded JsonSettingsStorage::load()
{
    Loaded result;
    QFile file(path_);
    if (!file.exists()) return result;
    QString reason;
    if (!file.open(QIODevice::ReadOnly)) {
        reason = file.errorString();
    } else {
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
        if (error.error != QJsonParseError::NoError) reason = error.errorString();
        else if (!doc.isObject()) reason = QStringLiteral("not a settings dictionary");
        else {
            const QJsonObject o = doc.object();
            for (auto it = o.begin(); it != o.end(); ++it) result.values.insert(it.key(), fromJson(it.value()));
            return result;
        }
    }
    file.close();
    const QString aside = path_ + QStringLiteral(".unreadable-")
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const bool kept = QFile::rename(path_, aside);
    result.problem = QStringLiteral("the settings file %1 could not be read (%2); starting with the default settings. %3")
                         .arg(path_, reason,
                              kept ? QStringLiteral("The file was kept as %1.").arg(aside)
                                   : QStringLiteral("It is left in place and will not be overwritten."));
    if (!kept) path_.clear();
    return result;
}

bool JsonSettingsStorage::save(const QVariantMap& values)
{
    if (path_.isEmpty()) return false;
    const QString folder = QFileInfo(path_).absolutePath();
    if (!QDir(folder).exists()) {
        if (!QDir().mkpath(folder)) return false;
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    QJsonObject o;
    for (auto it = values.begin(); it != values.end(); ++it) o.insert(it.key(), toJson(it.value()));
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(QJsonDocument(o).toJson(QJsonDocument::Indented));
    return file.commit();
}

}  // namespace orlo
