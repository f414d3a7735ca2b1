#include "clipboard/ClipHistoryFile.h"
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSaveFile>
#include <cmath>

namespace orlo {

namespace {

// Writing by hand keeps the keys in field order (QJsonObject sorts them) and is quick.
void appendString(QByteArray& out, const QString& text)
{
    static const char hex[] = "0123456789abcdef";
    out += '"';
    const QByteArray utf8 = text.toUtf8();
    const char* p = utf8.constData();
    const char* end = p + utf8.size();
    const char* run = p;
    for (; p < end; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c >= 0x20 && c != '"' && c != '\\') continue;
        out.append(run, p - run);
        run = p + 1;
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        default:
            out += "\\u00";
            out += hex[c >> 4];
            out += hex[c & 0xF];
        }
    }
    out.append(run, p - run);
    out += '"';
}

void appendKey(QByteArray& out, const char* key)
{
    out += ",\"";
    out += key;
    out += "\":";
}

void appendItem(QByteArray& out, const ClipItem& item)
{
    out += "{\"id\":\"";
    out += item.id.toString(QUuid::WithoutBraces).toUpper().toLatin1();
    out += "\",\"kind\":\"";
    out += ClipItem::kindName(item.kind).toLatin1();
    out += '"';
    if (item.text) {
        appendKey(out, "text");
        appendString(out, *item.text);
    }
    if (item.rtf) {
        appendKey(out, "rtf");
        out += '"' + item.rtf->toBase64() + '"';
    }
    if (item.html) {
        appendKey(out, "html");
        out += '"' + item.html->toBase64() + '"';
    }
    if (item.image) {
        appendKey(out, "image");
        appendString(out, *item.image);
    }
    if (item.imageWidth) {
        appendKey(out, "imageWidth");
        out += QByteArray::number(*item.imageWidth);
    }
    if (item.imageHeight) {
        appendKey(out, "imageHeight");
        out += QByteArray::number(*item.imageHeight);
    }
    if (item.files) {
        appendKey(out, "files");
        out += '[';
        for (qsizetype i = 0; i < item.files->size(); ++i) {
            if (i) out += ',';
            appendString(out, item.files->at(i));
        }
        out += ']';
    }
    if (item.color) {
        appendKey(out, "color");
        appendString(out, *item.color);
    }
    if (item.appBundleID) {
        appendKey(out, "appBundleID");
        appendString(out, *item.appBundleID);
    }
    if (item.appName) {
        appendKey(out, "appName");
        appendString(out, *item.appName);
    }
    appendKey(out, "date");
    const double seconds = double(item.date.toMSecsSinceEpoch()) / 1000.0 - double(ClipHistoryFile::ReferenceDateOffset);
    out += QByteArray::number(seconds, 'f', QLocale::FloatingPointShortest);
    appendKey(out, "pinned");
    out += item.pinned ? "true" : "false";
    appendKey(out, "signature");
    appendString(out, item.signature);
    out += '}';
}

// Source names repeat across thousands of items: share one copy of each.
class StringPool {
public:
    QString shared(const QString& s)
    {
        auto it = pool_.constFind(s);
        if (it != pool_.constEnd()) return *it;
        pool_.insert(s, s);
        return s;
    }

private:
    QHash<QString, QString> pool_;
};

std::optional<QByteArray> base64(const QJsonValue& v)
{
    if (!v.isString()) return std::nullopt;
    auto decoded = QByteArray::fromBase64Encoding(v.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) return std::nullopt;
    return decoded.decoded;
}

std::optional<ClipItem> decodeItem(const QJsonValue& value, StringPool& pool)
{
    if (!value.isObject()) return std::nullopt;
    const QJsonObject o = value.toObject();
    ClipItem item;
    bool hasId = false, hasKind = false, hasDate = false, hasPinned = false, hasSignature = false;
    for (auto it = o.constBegin(); it != o.constEnd(); ++it) {
        const QJsonValue v = it.value();
        const QString key = it.key();
        // Optional keys may also be null, which is the same as absent.
        const bool isNull = v.isNull();
        if (key == QLatin1String("id")) {
            item.id = QUuid::fromString(v.toString());
            if (!v.isString() || item.id.isNull()) return std::nullopt;
            hasId = true;
        } else if (key == QLatin1String("kind")) {
            const auto kind = ClipItem::kindFromName(v.toString());
            if (!kind) return std::nullopt;
            item.kind = *kind;
            hasKind = true;
        } else if (key == QLatin1String("date")) {
            if (!v.isDouble() || !std::isfinite(v.toDouble())) return std::nullopt;
            const double ms = (v.toDouble() + double(ClipHistoryFile::ReferenceDateOffset)) * 1000.0;
            item.date = QDateTime::fromMSecsSinceEpoch(qint64(std::llround(ms)), Qt::UTC);
            hasDate = true;
        } else if (key == QLatin1String("pinned")) {
            if (!v.isBool()) return std::nullopt;
            item.pinned = v.toBool();
            hasPinned = true;
        } else if (key == QLatin1String("signature")) {
            if (!v.isString()) return std::nullopt;
            item.signature = v.toString();
            hasSignature = true;
        } else if (isNull) {
            continue;
        } else if (key == QLatin1String("text") || key == QLatin1String("image") || key == QLatin1String("color")
                   || key == QLatin1String("appBundleID") || key == QLatin1String("appName")) {
            if (!v.isString()) return std::nullopt;
            const QString s = v.toString();
            if (key == QLatin1String("text")) item.text = s;
            else if (key == QLatin1String("image")) item.image = s;
            else if (key == QLatin1String("color")) item.color = s;
            else if (key == QLatin1String("appBundleID")) item.appBundleID = pool.shared(s);
            else item.appName = pool.shared(s);
        } else if (key == QLatin1String("rtf") || key == QLatin1String("html")) {
            auto bytes = base64(v);
            if (!bytes) return std::nullopt;
            (key == QLatin1String("rtf") ? item.rtf : item.html) = std::move(bytes);
        } else if (key == QLatin1String("imageWidth") || key == QLatin1String("imageHeight")) {
            const double d = v.toDouble();
            if (!v.isDouble() || d != std::floor(d) || std::abs(d) > 2147483647.0) return std::nullopt;
            (key == QLatin1String("imageWidth") ? item.imageWidth : item.imageHeight) = int(d);
        } else if (key == QLatin1String("files")) {
            if (!v.isArray()) return std::nullopt;
            QStringList files;
            for (const QJsonValue& path : v.toArray()) {
                if (!path.isString()) return std::nullopt;
                files << path.toString();
            }
            item.files = files;
        }
    }
    if (!hasId || !hasKind || !hasDate || !hasPinned || !hasSignature) return std::nullopt;
    return item;
}

}  // namespace

QByteArray ClipHistoryFile::encode(const QList<ClipItem>& items)
{
    QByteArray out;
    out.reserve(qsizetype(items.size()) * 256);
    out += '[';
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (i) out += ',';
        appendItem(out, items[i]);
    }
    out += ']';
    return out;
}

std::optional<QList<ClipItem>> ClipHistoryFile::decode(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) return std::nullopt;
    const QJsonArray array = doc.array();
    QList<ClipItem> items;
    items.reserve(array.size());
    StringPool pool;
    for (const QJsonValue& value : array) {
        auto item = decodeItem(value, pool);
        if (!item) return std::nullopt;
        items.append(std::move(*item));
    }
    return items;
}

ClipHistoryFile::Contents ClipHistoryFile::read() const
{
    QFile file(path_);
    if (!file.exists()) return {};
    if (!file.open(QIODevice::ReadOnly)) return {Status::Unreadable, {}};
    auto items = decode(file.readAll());
    if (!items) return {Status::Unreadable, {}};
    return {Status::Loaded, std::move(*items)};
}

bool ClipHistoryFile::write(const QList<ClipItem>& items, QString* error) const
{
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error) *error = file.errorString();
        return false;
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(encode(items));
    if (!file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

QString ClipHistoryFile::setAside() const
{
    const QString aside = path_ + QStringLiteral(".unreadable-") + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    return QFile::rename(path_, aside) ? aside : QString();
}

}  // namespace orlo
