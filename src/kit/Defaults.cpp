#include "kit/Defaults.h"
#include "platform/SettingsStorage.h"

namespace orlo {

Defaults::Defaults(SettingsStorage& storage, QObject* parent) : QObject(parent), storage_(storage)
{
    auto loaded = storage_.load();
    values_ = loaded.values;
    loadProblem_ = loaded.problem;
    saveTimer_.setSingleShot(true);
    saveTimer_.setInterval(0);
    connect(&saveTimer_, &QTimer::timeout, this, &Defaults::flush);
}

Defaults::~Defaults() { flush(); }

QVariant Defaults::object(const QString& key) const { return values_.value(key); }

static bool isNumber(const QVariant& v)
{
    const int t = v.typeId();
    return t == QMetaType::Int || t == QMetaType::LongLong || t == QMetaType::UInt
        || t == QMetaType::ULongLong || t == QMetaType::Double;
}

std::optional<bool> Defaults::boolValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (v.typeId() != QMetaType::Bool) return std::nullopt;
    return v.toBool();
}

std::optional<qint64> Defaults::integerValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (!isNumber(v)) return std::nullopt;
    if (v.typeId() != QMetaType::Double) return v.toLongLong();
    // A double beyond the 64-bit integers, or not a number, has no integer to be cut to.
    const double d = v.toDouble();
    if (!(d >= -0x1p63 && d < 0x1p63)) return std::nullopt;
    return qint64(d);
}

std::optional<double> Defaults::doubleValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (!isNumber(v)) return std::nullopt;
    return v.toDouble();
}

std::optional<QString> Defaults::stringValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (v.typeId() != QMetaType::QString) return std::nullopt;
    return v.toString();
}

std::optional<QByteArray> Defaults::dataValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (v.typeId() != QMetaType::QByteArray) return std::nullopt;
    return v.toByteArray();
}

std::optional<QStringList> Defaults::stringListValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (v.typeId() == QMetaType::QStringList) return v.toStringList();
    if (v.typeId() != QMetaType::QVariantList) return std::nullopt;
    QStringList out;
    for (const QVariant& item : v.toList()) {
        if (item.typeId() != QMetaType::QString) return std::nullopt;
        out << item.toString();
    }
    return out;
}

std::optional<QVariantMap> Defaults::dictionaryValue(const QString& key) const
{
    const QVariant v = values_.value(key);
    if (v.typeId() != QMetaType::QVariantMap) return std::nullopt;
    return v.toMap();
}

void Defaults::set(const QString& key, const QVariant& value)
{
    auto it = values_.find(key);
    if (it != values_.end() && it->typeId() == value.typeId() && *it == value) return;
    values_.insert(key, value);
    dirty_ = true;
    saveTimer_.start();
    emit changed(key);
}

void Defaults::remove(const QString& key)
{
    if (values_.remove(key) == 0) return;
    dirty_ = true;
    saveTimer_.start();
    emit changed(key);
}

void Defaults::flush()
{
    saveTimer_.stop();
    if (!dirty_) return;
    dirty_ = false;
    storage_.save(values_);
}

}  // namespace orlo
