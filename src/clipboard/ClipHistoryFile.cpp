#include "clipboard/ClipHistoryFile.h"
#include "clipboard/JsonReader.h"
#include <QBuffer>
#include <QFile>
#include <QtEndian>
#include <QSaveFile>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orlo {

namespace {

// Writing by hand keeps the keys in field order (QJsonObject sorts them) and is quick. The
// text goes to the device in pieces, so a save never holds much more than the history itself.
class JsonOut {
public:
    explicit JsonOut(QIODevice& device) : device_(device), buffer_(SpillBytes + SpillBytes / 4, Qt::Uninitialized) {}
    ~JsonOut() { flush(); }
    // Room for at least this many bytes at the end; commit() says where the writing ended.
    char* room(qsizetype bytes)
    {
        if (buffer_.size() - used_ < bytes) grow(bytes);
        return buffer_.data() + used_;
    }
    void commit(const char* end) { used_ = end - buffer_.constData(); }
    void put(char c) { *room(1) = c, ++used_; }
    template <size_t N>
    void put(const char (&text)[N])
    {
        std::memcpy(room(N - 1), text, N - 1);
        used_ += N - 1;
    }
    void put(QByteArrayView text)
    {
        std::memcpy(room(text.size()), text.data(), size_t(text.size()));
        used_ += text.size();
    }
    void spillIfFull()
    {
        if (used_ >= SpillBytes) flush();
    }
    void flush()
    {
        if (used_ > 0) device_.write(buffer_.constData(), used_);
        used_ = 0;
    }
    // The items in [from, to), each after a comma but the very first.
    void appendItems(const QList<ClipItem>& items, qsizetype from, qsizetype to);

private:
    void grow(qsizetype bytes)
    {
        QByteArray larger(std::max(2 * buffer_.size(), used_ + bytes), Qt::Uninitialized);
        std::memcpy(larger.data(), buffer_.constData(), size_t(used_));
        buffer_ = std::move(larger);
    }

    static constexpr qsizetype SpillBytes = 1 << 20;
    QIODevice& device_;
    QByteArray buffer_;  // its first used_ bytes are written, the rest is room
    qsizetype used_ = 0;
};

void appendEscaped(JsonOut& out, QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    // Room for the worst case: every character escaped as \u00XX.
    char* d = out.room(text.size() * 6);
    const char16_t* s = text.utf16();
    const char16_t* const end = s + text.size();
    while (s < end) {
#if defined(__SSE2__)
        // Eight characters at a time while they are plain ASCII: below 0x80, none below 0x20,
        // none a quote or a backslash. The plain ones before the first other are written.
        bool special = false;
        while (!special && end - s >= 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            const __m128i beyondAscii = _mm_xor_si128(_mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(qint16(0xFF80))), _mm_setzero_si128()),
                                                      _mm_set1_epi16(-1));
            const __m128i stops = _mm_or_si128(_mm_or_si128(beyondAscii, _mm_cmplt_epi16(units, _mm_set1_epi16(0x20))),
                                               _mm_or_si128(_mm_cmpeq_epi16(units, _mm_set1_epi16('"')),
                                                            _mm_cmpeq_epi16(units, _mm_set1_epi16('\\'))));
            const unsigned mask = unsigned(_mm_movemask_epi8(stops));
            // The room holds six bytes a character, so all eight may be stored.
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(units, units));
            const int plain = mask ? std::countr_zero(mask) / 2 : 8;
            d += plain;
            s += plain;
            special = plain < 8;
        }
#else
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
#endif
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
    out.commit(d);
}

void appendString(JsonOut& out, QStringView text)
{
    constexpr qsizetype Piece = 1 << 16;
    out.put('"');
    while (!text.isEmpty()) {
        qsizetype n = std::min(Piece, text.size());
        if (n < text.size() && text[n - 1].isHighSurrogate()) ++n;  // keep a surrogate pair together
        appendEscaped(out, text.first(n));
        text = text.sliced(n);
        out.spillIfFull();
    }
    out.put('"');
}

void appendBase64(JsonOut& out, const QByteArray& data)
{
    out.put('"');
    out.put(data.toBase64());
    out.put('"');
}

// Upper-case and without braces, written in place.
void appendUuid(JsonOut& out, const QUuid& id)
{
    static const char hex[] = "0123456789ABCDEF";
    uchar bytes[16];
    qToBigEndian(id.data1, bytes);
    qToBigEndian(id.data2, bytes + 4);
    qToBigEndian(id.data3, bytes + 6);
    std::memcpy(bytes + 8, id.data4, 8);
    char* d = out.room(36);
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) *d++ = '-';
        *d++ = hex[bytes[i] >> 4];
        *d++ = hex[bytes[i] & 0xF];
    }
    out.commit(d);
}

// The shortest text that reads back as the same number, never in exponent form.
template <typename Number>
void appendNumber(JsonOut& out, Number value)
{
    // Fixed notation of a double takes at most 309 digits before the point and 17 after it.
    constexpr qsizetype Longest = 340;
    char* d = out.room(Longest);
    std::to_chars_result written;
    if constexpr (std::is_floating_point_v<Number>) written = std::to_chars(d, d + Longest, value, std::chars_format::fixed);
    else written = std::to_chars(d, d + Longest, value);
    if (written.ec != std::errc()) *(written.ptr = d) = '0', ++written.ptr;
    out.commit(written.ptr);
}

template <size_t N>
void appendKey(JsonOut& out, const char (&key)[N])
{
    out.put(",\"");
    out.put(key);
    out.put("\":");
}

void appendItem(JsonOut& out, const ClipItem& item)
{
    out.put("{\"id\":\"");
    appendUuid(out, item.id);
    out.put("\",\"kind\":");
    appendString(out, ClipItem::kindName(item.kind));
    if (item.text) {
        appendKey(out, "text");
        appendString(out, *item.text);
    }
    if (item.rtf) {
        appendKey(out, "rtf");
        appendBase64(out, *item.rtf);
    }
    if (item.html) {
        appendKey(out, "html");
        appendBase64(out, *item.html);
    }
    if (item.image) {
        appendKey(out, "image");
        appendString(out, *item.image);
    }
    if (item.imageWidth) {
        appendKey(out, "imageWidth");
        appendNumber(out, *item.imageWidth);
    }
    if (item.imageHeight) {
        appendKey(out, "imageHeight");
        appendNumber(out, *item.imageHeight);
    }
    if (item.files) {
        appendKey(out, "files");
        out.put('[');
        for (qsizetype i = 0; i < item.files->size(); ++i) {
            if (i) out.put(',');
            appendString(out, item.files->at(i));
        }
        out.put(']');
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
    appendNumber(out, seconds);
    appendKey(out, "pinned");
    if (item.pinned) out.put("true");
    else out.put("false");
    appendKey(out, "signature");
    appendString(out, item.signature);
    out.put('}');
    out.spillIfFull();
}

void JsonOut::appendItems(const QList<ClipItem>& items, qsizetype from, qsizetype to)
{
    for (qsizetype i = from; i < to; ++i) {
        if (i) put(',');
        appendItem(*this, items[i]);
    }
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

constexpr std::array<qint8, 256> hexDigits = [] {
    std::array<qint8, 256> digits{};
    digits.fill(-1);
    for (int c = 0; c < 10; ++c) digits['0' + c] = qint8(c);
    for (int c = 0; c < 6; ++c) digits['a' + c] = digits['A' + c] = qint8(10 + c);
    return digits;
}();

// "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in either case, braces allowed; a null id otherwise.
QUuid uuidFrom(QByteArrayView text)
{
    if (text.size() == 38 && text.front() == '{' && text.back() == '}') text = text.sliced(1, 36);
    if (text.size() != 36) return {};
    char bytes[16];
    int at = 0;
    for (int i = 0; i < 16; ++i) {
        if (at == 8 || at == 13 || at == 18 || at == 23) {
            if (text[at++] != '-') return {};
        }
        const int high = hexDigits[uchar(text[at])], low = hexDigits[uchar(text[at + 1])];
        if (high < 0 || low < 0) return {};
        bytes[i] = char(high << 4 | low);
        at += 2;
    }
    return QUuid::fromRfc4122(QByteArrayView(bytes, 16));
}

constexpr std::array<qint8, 256> base64Digits = [] {
    std::array<qint8, 256> digits{};
    digits.fill(-1);
    const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int i = 0; i < 64; ++i) digits[uchar(alphabet[i])] = qint8(i);
    return digits;
}();

// Strict Base64, padding optional: nothing when any character is out of place. Qt's decoder
// takes a byte at a time through a slower path.
std::optional<QByteArray> fromBase64(QByteArrayView text)
{
    if (text.endsWith('=')) text.chop(text.endsWith("==") ? 2 : 1);
    if (text.size() % 4 == 1) return std::nullopt;
    QByteArray out(text.size() / 4 * 3 + (text.size() % 4 ? text.size() % 4 - 1 : 0), Qt::Uninitialized);
    char* d = out.data();
    const uchar* c = reinterpret_cast<const uchar*>(text.data());
    const uchar* const end = c + text.size();
    for (; end - c >= 4; c += 4) {
        const int a = base64Digits[c[0]], b = base64Digits[c[1]], e = base64Digits[c[2]], f = base64Digits[c[3]];
        if ((a | b | e | f) < 0) return std::nullopt;
        const quint32 bits = quint32(a) << 18 | quint32(b) << 12 | quint32(e) << 6 | quint32(f);
        *d++ = char(bits >> 16);
        *d++ = char(bits >> 8);
        *d++ = char(bits);
    }
    // Two or three characters left hold one or two bytes.
    quint32 bits = 0;
    for (const uchar* rest = c; rest < end; ++rest) {
        const int digit = base64Digits[*rest];
        if (digit < 0) return std::nullopt;
        bits = bits << 6 | quint32(digit);
    }
    if (end - c == 2) *d++ = char(bits >> 4);
    if (end - c == 3) {
        *d++ = char(bits >> 10);
        *d++ = char(bits >> 2);
    }
    return out;
}

enum class Field { Id, Kind, Text, Rtf, Html, Image, ImageWidth, ImageHeight, Files, Color, AppBundleID, AppName, Date, Pinned, Signature, Unknown };

// Which field a key names, with one comparison: keys are told apart by length and first letter.
Field fieldNamed(QByteArrayView key)
{
    // Called only where the key has the name's length.
    auto is = [key]<size_t N>(const char (&name)[N], Field field) {
        return std::memcmp(key.data(), name, N - 1) == 0 ? field : Field::Unknown;
    };
    switch (key.size()) {
    case 2: return is("id", Field::Id);
    case 3: return is("rtf", Field::Rtf);
    case 4:
        switch (key[0]) {
        case 'k': return is("kind", Field::Kind);
        case 't': return is("text", Field::Text);
        case 'h': return is("html", Field::Html);
        case 'd': return is("date", Field::Date);
        }
        break;
    case 5:
        switch (key[0]) {
        case 'i': return is("image", Field::Image);
        case 'f': return is("files", Field::Files);
        case 'c': return is("color", Field::Color);
        }
        break;
    case 6: return is("pinned", Field::Pinned);
    case 7: return is("appName", Field::AppName);
    case 9: return is("signature", Field::Signature);
    case 10: return is("imageWidth", Field::ImageWidth);
    case 11: return key[0] == 'i' ? is("imageHeight", Field::ImageHeight) : is("appBundleID", Field::AppBundleID);
    }
    return Field::Unknown;
}

// Reads one item into a fresh one; optional keys may be missing or null, unknown keys are skipped.
bool readItem(JsonReader& in, StringPool& pool, ClipItem& item)
{
    if (!in.expect('{')) return false;
    bool hasId = false, hasKind = false, hasDate = false, hasPinned = false, hasSignature = false;
    QByteArrayView key;
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
        field = fromBase64(raw);
        return field.has_value();
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
        switch (fieldNamed(key)) {
        case Field::Id:
            good = in.readUtf8(&raw) && !(item.id = uuidFrom(raw)).isNull();
            hasId = true;
            break;
        case Field::Kind: {
            std::optional<ClipItem::Kind> kind;
            good = in.readUtf8(&raw) && (kind = kindNamed(raw));
            if (kind) item.kind = *kind;
            hasKind = true;
            break;
        }
        case Field::Date:
            good = in.readNumber(&number) && std::isfinite(number);
            item.date = QDateTime::fromMSecsSinceEpoch(
                qint64(std::llround((number + double(ClipHistoryFile::ReferenceDateOffset)) * 1000.0)), Qt::UTC);
            hasDate = true;
            break;
        case Field::Pinned:
            good = in.readBool(&item.pinned);
            hasPinned = true;
            break;
        case Field::Signature:
            good = in.readString(&item.signature);
            hasSignature = true;
            break;
        case Field::Text: good = optionalString(item.text); break;
        case Field::Image: good = optionalString(item.image); break;
        case Field::Color: good = optionalString(item.color); break;
        case Field::AppBundleID: good = sharedString(item.appBundleID); break;
        case Field::AppName: good = sharedString(item.appName); break;
        case Field::Rtf: good = optionalBase64(item.rtf); break;
        case Field::Html: good = optionalBase64(item.html); break;
        case Field::ImageWidth: good = optionalInt(item.imageWidth); break;
        case Field::ImageHeight: good = optionalInt(item.imageHeight); break;
        case Field::Files:
            if (in.peek() == 'n') {
                good = in.readNull();
                break;
            }
            item.files.emplace();
            good = in.expect('[');
            if (good && !in.take(']')) {
                do {
                    good = in.readString(&s);
                    item.files->append(s);
                } while (good && in.more(']'));
            }
            break;
        case Field::Unknown: good = in.skipValue(); break;
        }
        if (!good || !in.ok()) return false;
    } while (in.more('}'));
    return in.ok() && hasId && hasKind && hasDate && hasPinned && hasSignature;
}

// Reads the items of one part of the array: the first part begins with its '[', the last
// ends with its ']', and the others hold whole items separated by commas.
bool readPart(QByteArrayView part, bool first, bool last, QList<ClipItem>& items)
{
    JsonReader in(part);
    StringPool pool;
    if (first && !in.expect('[')) return false;
    if (first && last && in.take(']')) return in.atEnd();
    do {
        // Read where it is kept, rather than moved there.
        if (!readItem(in, pool, items.emplaceBack())) return false;
        if (!last && in.atEnd()) return true;
    } while (in.more(']'));
    return last && in.atEnd();
}

}  // namespace

void ClipHistoryFile::encode(const QList<ClipItem>& items, QIODevice& device)
{
    // A long history is encoded in parts: the later ones by other threads into memory, while
    // this one writes the first.
    const qsizetype parts = std::clamp<qsizetype>(items.size() / ItemsPerPart, 1, std::max(2, QThread::idealThreadCount()));
    auto bounds = [&items, parts](qsizetype part) { return part * items.size() / parts; };
    QList<QFuture<std::optional<QByteArray>>> later;
    for (qsizetype part = 1; part < parts; ++part) {
        later << QtConcurrent::run([items, from = bounds(part), to = bounds(part + 1)]() -> std::optional<QByteArray> {
            try {
                QByteArray bytes;
                QBuffer buffer(&bytes);
                buffer.open(QIODevice::WriteOnly);
                JsonOut(buffer).appendItems(items, from, to);
                return bytes;
            } catch (const std::bad_alloc&) {
                return std::nullopt;
            }
        });
    }
    JsonOut out(device);
    out.put('[');
    out.appendItems(items, 0, bounds(1));
    out.flush();
    bool failed = false;
    for (auto& part : later) {
        const auto bytes = part.takeResult();
        failed = failed || !bytes;
        if (!failed) device.write(*bytes);
    }
    if (failed) throw std::bad_alloc();
    out.put(']');
}

QByteArray ClipHistoryFile::encode(const QList<ClipItem>& items)
{
    QByteArray json;
    QBuffer buffer(&json);
    buffer.open(QIODevice::WriteOnly);
    encode(items, buffer);
    return json;
}

QList<QByteArrayView> ClipHistoryFile::splitIntoParts(QByteArrayView json, qsizetype bytesPerPart)
{
    // Orlo writes no blanks between items and begins each with its id, so in its files this
    // seam is found only where one item ends and the next begins: inside a string every quote
    // is escaped, and a quote closing a string is never followed by a letter.
    static constexpr QByteArrayView seam = "},{\"id\":\"";
    const qsizetype wanted = std::min<qsizetype>(json.size() / std::max<qsizetype>(bytesPerPart, 1) + 1,
                                                 std::max(2, QThread::idealThreadCount()));
    QList<QByteArrayView> parts;
    qsizetype begin = 0;
    for (qsizetype i = 1; i < wanted; ++i) {
        const qsizetype at = json.indexOf(seam, std::max(begin, i * json.size() / wanted));
        if (at < 0) break;
        parts << json.sliced(begin, at + 1 - begin);
        begin = at + 2;
    }
    parts << json.sliced(begin);
    return parts;
}

std::optional<QList<ClipItem>> ClipHistoryFile::decode(const QByteArray& json, qsizetype bytesPerPart)
{
    // Read as a stream: a document of a long history would cost several times the file's
    // size in memory and most of the time. A long file is read in parts on several threads.
    const QList<QByteArrayView> parts = splitIntoParts(json, bytesPerPart);
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
    QList<QFuture<std::optional<QList<ClipItem>>>> later;
    for (qsizetype i = 1; i < parts.size(); ++i) {
        later << QtConcurrent::run([part = parts[i], last = i == parts.size() - 1]() -> std::optional<QList<ClipItem>> {
            QList<ClipItem> items;
            items.reserve(part.size() / 250 + 1);
            if (!readPart(part, false, last, items)) return std::nullopt;
            return items;
        });
    }
    bool good = readPart(parts.first(), true, parts.size() == 1, items);
    for (auto& part : later) {
        auto partItems = part.takeResult();
        good = good && partItems;
        if (good) items.append(std::move(*partItems));
    }
    // Parts that did not split where items meet are read again as one.
    if (!good && parts.size() > 1) return decode(json, json.size() + 1);
    if (!good) return std::nullopt;
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
