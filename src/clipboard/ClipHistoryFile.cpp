#include "clipboard/ClipHistoryFile.h"
#include "clipboard/JsonReader.h"
#include <QBuffer>
#include <QFile>
#include <QLocale>
#include <QSaveFile>
#include <cmath>
#include <cstring>

namespace orlo {

namespace {

// Writing by hand keeps the keys in field order (QJsonObject sorts them) and is quick. The
// text goes to the device in pieces, so a save never holds much more than the history itself.
class JsonOut {
public:
    explicit JsonOut(QIODevice& device) : device_(device) { buffer_.reserve(SpillBytes + SpillBytes / 4); }
    ~JsonOut() { flush(); }
    QByteArray& bytes() { return buffer_; }
    void spillIfFull()
    {
        if (buffer_.size() >= SpillBytes) flush();
    }
    void flush()
    {
        if (!buffer_.isEmpty()) device_.write(buffer_);
        buffer_.resize(0);
    }

private:
    static constexpr qsizetype SpillBytes = 1 << 20;
    QIODevice& device_;
    QByteArray buffer_;
};

void appendEscaped(QByteArray& out, QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    // Room for the worst case (every character escaped as \u00XX), trimmed afterwards.
    const qsizetype start = out.size();
    out.resize(start + text.size() * 6);
    char* d = out.data() + start;
    const char16_t* s = text.utf16();
    const char16_t* const end = s + text.size();
    while (s < end) {
        // Four characters at a time while they are plain ASCII: each below 0x80, none below
        // 0x20, none a quote or a backslash (a zero unit after subtracting one sets its top bit).
        constexpr quint64 ones = 0x0001000100010001ull, tops = 0x8000800080008000ull;
        while (end - s >= 4) {
            quint64 units;
            std::memcpy(&units, s, 8);
            const quint64 quote = units ^ (ones * '"'), backslash = units ^ (ones * '\\');
            if ((units & (ones * 0xFF80)) || ((units - ones * 0x20) | (quote - ones) | (backslash - ones)) & tops) break;
            for (int i = 0; i < 4; ++i) *d++ = char(s[i]);
            s += 4;
        }
        if (s == end) break;
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
    out.resize(d - out.constData());
}

void appendString(JsonOut& out, QStringView text)
{
    constexpr qsizetype Piece = 1 << 16;
    out.bytes() += '"';
    while (!text.isEmpty()) {
        qsizetype n = std::min(Piece, text.size());
        if (n < text.size() && text[n - 1].isHighSurrogate()) ++n;  // keep a surrogate pair together
        appendEscaped(out.bytes(), text.first(n));
        text = text.sliced(n);
        out.spillIfFull();
    }
    out.bytes() += '"';
}

void appendBase64(QByteArray& out, const QByteArray& data)
{
    out += '"';
    out += data.toBase64();
    out += '"';
}

void appendKey(JsonOut& json, const char* key)
{
    QByteArray& out = json.bytes();
    out += ",\"";
    out += key;
    out += "\":";
}

void appendItem(JsonOut& json, const ClipItem& item)
{
    QByteArray& out = json.bytes();
    out += "{\"id\":\"";
    out += item.id.toByteArray(QUuid::WithoutBraces).toUpper();
    out += "\",\"kind\":";
    appendString(json, ClipItem::kindName(item.kind));
    if (item.text) {
        appendKey(json, "text");
        appendString(json, *item.text);
    }
    if (item.rtf) {
        appendKey(json, "rtf");
        appendBase64(out, *item.rtf);
    }
    if (item.html) {
        appendKey(json, "html");
        appendBase64(out, *item.html);
    }
    if (item.image) {
        appendKey(json, "image");
        appendString(json, *item.image);
    }
    if (item.imageWidth) {
        appendKey(json, "imageWidth");
        out += QByteArray::number(*item.imageWidth);
    }
    if (item.imageHeight) {
        appendKey(json, "imageHeight");
        out += QByteArray::number(*item.imageHeight);
    }
    if (item.files) {
        appendKey(json, "files");
        out += '[';
        for (qsizetype i = 0; i < item.files->size(); ++i) {
            if (i) out += ',';
            appendString(json, item.files->at(i));
        }
        out += ']';
    }
    if (item.color) {
        appendKey(json, "color");
        appendString(json, *item.color);
    }
    if (item.appBundleID) {
        appendKey(json, "appBundleID");
        appendString(json, *item.appBundleID);
    }
    if (item.appName) {
        appendKey(json, "appName");
        appendString(json, *item.appName);
    }
    appendKey(json, "date");
    const double seconds = double(item.date.toMSecsSinceEpoch()) / 1000.0 - double(ClipHistoryFile::ReferenceDateOffset);
    out += QByteArray::number(seconds, 'f', QLocale::FloatingPointShortest);
    appendKey(json, "pinned");
    out += item.pinned ? "true" : "false";
    appendKey(json, "signature");
    appendString(json, item.signature);
    out += '}';
    json.spillIfFull();
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

std::optional<ClipItem::Kind> kindNamed(QByteArrayView name)
{
    using Kind = ClipItem::Kind;
    for (Kind kind : {Kind::Text, Kind::Image, Kind::Files, Kind::Color})
        if (QLatin1StringView(name) == ClipItem::kindName(kind)) return kind;
    return std::nullopt;
}

// Reads one item into a fresh one; optional keys may be missing or null, unknown keys are skipped.
bool readItem(JsonReader& in, StringPool& pool, ClipItem& item)
{
    if (!in.expect('{')) return false;
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
        auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromRawData(raw.data(), raw.size()),
                                                      QByteArray::AbortOnBase64DecodingErrors);
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
    if (in.take('}')) return false;  // no required key
    do {
        if (!in.readKey(&key)) return false;
        bool good = true;
        if (key == QByteArrayView("id")) {
            good = in.readUtf8(&raw) && !(item.id = QUuid::fromString(QLatin1StringView(raw))).isNull();
            hasId = true;
        } else if (key == QByteArrayView("kind")) {
            std::optional<ClipItem::Kind> kind;
            good = in.readUtf8(&raw) && (kind = kindNamed(raw));
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
        if (!good || !in.ok()) return false;
    } while (in.more('}'));
    return in.ok() && hasId && hasKind && hasDate && hasPinned && hasSignature;
}

}  // namespace

void ClipHistoryFile::encode(const QList<ClipItem>& items, QIODevice& device)
{
    JsonOut out(device);
    out.bytes() += '[';
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (i) out.bytes() += ',';
        appendItem(out, items[i]);
    }
    out.bytes() += ']';
}

QByteArray ClipHistoryFile::encode(const QList<ClipItem>& items)
{
    QByteArray json;
    QBuffer buffer(&json);
    buffer.open(QIODevice::WriteOnly);
    encode(items, buffer);
    return json;
}

std::optional<QList<ClipItem>> ClipHistoryFile::decode(const QByteArray& json)
{
    // Read as a stream: a document of a long history would cost several times the file's
    // size in memory and most of the time.
    JsonReader in(json);
    if (!in.expect('[')) return std::nullopt;
    // Room for the items the file likely holds, and as much again at the front, where the
    // history grows: an empty list given room at its front starts in the middle of its
    // memory. Memory never written is never touched, so the room costs no resident memory.
    QList<ClipItem> items;
    const qsizetype expected = json.size() / 250 + 1;
    items.reserve(2 * expected);
    auto makeRoomAtFront = [&items] {
        items.prepend(ClipItem());
        items.removeFirst();
    };
    makeRoomAtFront();
    StringPool pool;
    if (!in.take(']')) {
        do {
            // Read where it is kept, rather than moved there.
            if (!readItem(in, pool, items.emplaceBack())) return std::nullopt;
        } while (in.more(']'));
    }
    if (!in.atEnd()) return std::nullopt;
    // A list that outgrew its room moved to the start of a larger one.
    if (items.size() > expected) makeRoomAtFront();
    // Not squeezed: that would copy the whole list.
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
    encode(items, file);
    if (!file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

QString ClipHistoryFile::setAside() const
{
    const QString aside = path_ + QStringLiteral(".unreadable-") + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    if (!QFile::rename(path_, aside)) return {};
    QFile::setPermissions(aside, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return aside;
}

}  // namespace orlo
