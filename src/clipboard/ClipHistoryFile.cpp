#include "clipboard/ClipHistoryFile.h"
#include "clipboard/JsonReader.h"
#include <QFile>
#include <QLocale>
#include <QSaveFile>
#include <cmath>

namespace orlo {

namespace {

// Writing by hand keeps the keys in field order (QJsonObject sorts them) and is quick.
void appendString(QByteArray& out, QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    // Room for the worst case (every character escaped as \u00XX), trimmed afterwards.
    const qsizetype start = out.size();
    out.resize(start + text.size() * 6 + 2);
    char* d = out.data() + start;
    *d++ = '"';
    const char16_t* s = text.utf16();
    const char16_t* const end = s + text.size();
    while (s < end) {
        const char16_t c = *s++;
        if (c < 0x80) {
            if (c >= 0x20 && c != '"' && c != '\\') {
                *d++ = char(c);
                continue;
            }
            *d++ = '\\';
            switch (c) {
            case '"': *d++ = '"'; break;
            case '\\': *d++ = '\\'; break;
            case '\n': *d++ = 'n'; break;
            case '\r': *d++ = 'r'; break;
            case '\t': *d++ = 't'; break;
            case '\b': *d++ = 'b'; break;
            case '\f': *d++ = 'f'; break;
            default:
                *d++ = 'u';
                *d++ = '0';
                *d++ = '0';
                *d++ = hex[c >> 4];
                *d++ = hex[c & 0xF];
            }
            continue;
        }
        char32_t u = c;
        if (QChar::isHighSurrogate(c) && s < end && QChar::isLowSurrogate(*s)) u = QChar::surrogateToUcs4(c, *s++);
        else if (QChar::isSurrogate(c)) u = 0xFFFD;  // a lone half of a pair is no character
        if (u < 0x800) {
            *d++ = char(0xC0 | (u >> 6));
        } else if (u < 0x10000) {
            *d++ = char(0xE0 | (u >> 12));
            *d++ = char(0x80 | ((u >> 6) & 0x3F));
        } else {
            *d++ = char(0xF0 | (u >> 18));
            *d++ = char(0x80 | ((u >> 12) & 0x3F));
            *d++ = char(0x80 | ((u >> 6) & 0x3F));
        }
        *d++ = char(0x80 | (u & 0x3F));
    }
    *d++ = '"';
    out.resize(d - out.constData());
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
    out += item.id.toByteArray(QUuid::WithoutBraces).toUpper();
    out += "\",\"kind\":";
    appendString(out, ClipItem::kindName(item.kind));
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
    QString shared(QByteArrayView utf8)
    {
        auto it = pool_.constFind(QByteArray::fromRawData(utf8.data(), utf8.size()));
        if (it != pool_.constEnd()) return *it;
        return *pool_.insert(utf8.toByteArray(), QString::fromUtf8(utf8));
    }

private:
    QHash<QByteArray, QString> pool_;
};

// Reads one item; optional keys may be missing or null, unknown keys are skipped.
std::optional<ClipItem> readItem(JsonReader& in, StringPool& pool)
{
    if (!in.expect('{')) return std::nullopt;
    ClipItem item;
    bool hasId = false, hasKind = false, hasDate = false, hasPinned = false, hasSignature = false;
    QByteArray key;
    QString s;
    QByteArrayView raw;
    double number = 0;
    auto optionalString = [&](std::optional<QString>& field) {
        if (in.peek() == 'n') return in.readNull();
        if (!in.readString(&s)) return false;
        field = s;
        return true;
    };
    auto sharedString = [&](std::optional<QString>& field) {
        if (in.peek() == 'n') return in.readNull();
        if (!in.readUtf8(&raw)) return false;
        field = pool.shared(raw);
        return true;
    };
    auto optionalBase64 = [&](std::optional<QByteArray>& field) {
        if (in.peek() == 'n') return in.readNull();
        if (!in.readUtf8(&raw)) return false;
        auto decoded = QByteArray::fromBase64Encoding(raw.toByteArray(), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded) return false;
        field = decoded.decoded;
        return true;
    };
    auto optionalInt = [&](std::optional<int>& field) {
        if (in.peek() == 'n') return in.readNull();
        if (!in.readNumber(&number) || number != std::floor(number) || std::abs(number) > 2147483647.0) return false;
        field = int(number);
        return true;
    };
    if (in.take('}')) return std::nullopt;  // no required key
    do {
        if (!in.readKey(&key)) return std::nullopt;
        bool good = true;
        if (key == QByteArrayView("id")) {
            good = in.readUtf8(&raw) && !(item.id = QUuid::fromString(QLatin1StringView(raw))).isNull();
            hasId = true;
        } else if (key == QByteArrayView("kind")) {
            std::optional<ClipItem::Kind> kind;
            good = in.readUtf8(&raw) && (kind = ClipItem::kindFromName(QString::fromUtf8(raw)));
            if (kind) item.kind = *kind;
            hasKind = true;
        } else if (key == QByteArrayView("date")) {
            good = in.readNumber(&number) && std::isfinite(number);
            item.date = QDateTime::fromMSecsSinceEpoch(
                qint64(std::llround((number + double(ClipHistoryFile::ReferenceDateOffset)) * 1000.0)), Qt::UTC);
            hasDate = true;
        } else if (key == QByteArrayView("pinned")) {
            good = in.readBool(&item.pinned);
            hasPinned = true;
        } else if (key == QByteArrayView("signature")) {
            good = in.readString(&item.signature);
            hasSignature = true;
        } else if (key == QByteArrayView("text")) {
            good = optionalString(item.text);
        } else if (key == QByteArrayView("image")) {
            good = optionalString(item.image);
        } else if (key == QByteArrayView("color")) {
            good = optionalString(item.color);
        } else if (key == QByteArrayView("appBundleID")) {
            good = sharedString(item.appBundleID);
        } else if (key == QByteArrayView("appName")) {
            good = sharedString(item.appName);
        } else if (key == QByteArrayView("rtf")) {
            good = optionalBase64(item.rtf);
        } else if (key == QByteArrayView("html")) {
            good = optionalBase64(item.html);
        } else if (key == QByteArrayView("imageWidth")) {
            good = optionalInt(item.imageWidth);
        } else if (key == QByteArrayView("imageHeight")) {
            good = optionalInt(item.imageHeight);
        } else if (key == QByteArrayView("files")) {
            if (in.peek() == 'n') {
                good = in.readNull();
            } else {
                QStringList files;
                good = in.expect('[');
                if (good && !in.take(']')) {
                    do {
                        good = in.readString(&s);
                        files << s;
                    } while (good && in.more(']'));
                }
                item.files = files;
            }
        } else {
            good = in.skipValue();
        }
        if (!good || !in.ok()) return std::nullopt;
    } while (in.more('}'));
    if (!in.ok() || !hasId || !hasKind || !hasDate || !hasPinned || !hasSignature) return std::nullopt;
    return item;
}

}  // namespace

QByteArray ClipHistoryFile::encode(const QList<ClipItem>& items)
{
    qsizetype estimate = 2;
    for (const ClipItem& item : items)
        estimate += 260 + (item.text ? item.text->size() : 0) + (item.rtf ? item.rtf->size() * 4 / 3 : 0)
                    + (item.html ? item.html->size() * 4 / 3 : 0);
    QByteArray out;
    out.reserve(estimate + estimate / 8);
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
    // Read as a stream: a document of a long history would cost several times the file's
    // size in memory and most of the time.
    JsonReader in(json);
    if (!in.expect('[')) return std::nullopt;
    QList<ClipItem> items;
    items.reserve(json.size() / 400);
    StringPool pool;
    if (!in.take(']')) {
        do {
            auto item = readItem(in, pool);
            if (!item) return std::nullopt;
            items.append(std::move(*item));
        } while (in.more(']'));
    }
    if (!in.atEnd()) return std::nullopt;
    items.squeeze();
    return items;
}

ClipHistoryFile::Contents ClipHistoryFile::read() const
{
    QFile file(path_);
    if (!file.exists()) return {};
    if (!file.open(QIODevice::ReadOnly)) return {Status::Unreadable, {}};
    // Parsed where it lies, without a copy of a file that may be tens of megabytes.
    const qint64 size = file.size();
    const uchar* mapped = size > 0 ? file.map(0, size) : nullptr;
    auto items = decode(mapped ? QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), size) : file.readAll());
    if (mapped) file.unmap(const_cast<uchar*>(mapped));
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
