#include "clipboard/ClipItemJson.h"
#include "clipboard/ClipFolder.h"
#include "clipboard/JsonReader.h"
#include <array>
#include <cmath>
#include <cstring>

namespace orlo {

// Writing by hand keeps the keys in field order (QJsonObject sorts them) and is quick.
void ClipItemJson::write(JsonWriter& out, const ClipItem& item)
{
    out.put("{\"id\":\"");
    out.uuid(item.id);
    out.put("\",\"kind\":");
    out.string(ClipItem::kindName(item.kind));
    if (item.text) {
        out.nextKey("text");
        out.string(*item.text);
    }
    if (item.rtf()) {
        out.nextKey("rtf");
        out.base64(*item.rtf());
    }
    if (item.html()) {
        out.nextKey("html");
        out.base64(*item.html());
    }
    if (item.image()) {
        out.nextKey("image");
        out.string(*item.image());
    }
    if (item.imageWidth()) {
        out.nextKey("imageWidth");
        out.number(*item.imageWidth());
    }
    if (item.imageHeight()) {
        out.nextKey("imageHeight");
        out.number(*item.imageHeight());
    }
    if (item.files()) {
        out.nextKey("files");
        out.put('[');
        for (qsizetype i = 0; i < item.files()->size(); ++i) {
            if (i) out.put(',');
            out.string(item.files()->at(i));
        }
        out.put(']');
    }
    if (item.color()) {
        out.nextKey("color");
        out.string(*item.color());
    }
    if (item.appBundleID) {
        out.nextKey("appBundleID");
        out.string(*item.appBundleID);
    }
    if (item.appName) {
        out.nextKey("appName");
        out.string(*item.appName);
    }
    out.nextKey("date");
    const double seconds = double(item.date.toMSecsSinceEpoch()) / 1000.0 - double(ClipHistoryFile::ReferenceDateOffset);
    out.number(seconds);
    out.nextKey("pinned");
    if (item.pinned) out.put("true");
    else out.put("false");
    out.nextKey("signature");
    char digest[ClipSignature::DigestTextLength];
    if (item.signature.digestText(digest)) {
        out.put('"');
        out.put(QByteArrayView(digest, ClipSignature::DigestTextLength));
        out.put('"');
    } else {
        out.string(item.signature.toString());
    }
    out.put('}');
    out.spillIfFull();
}

namespace {

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
bool readItem(JsonReader& in, StringPool& pool, ClipItem& item, quint64& signatureKey)
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
    // The forms only some kinds have are set at the end, and only those present.
    std::optional<QByteArray> rtf, html;
    std::optional<QString> image, color;
    std::optional<int> imageWidth, imageHeight;
    std::optional<QStringList> files;
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
            good = in.readUtf8(&raw);
            item.signature = ClipSignature::fromUtf8(raw);
            signatureKey = item.signature.key();
            hasSignature = true;
            break;
        case Field::Text: good = optionalString(item.text); break;
        case Field::Image: good = optionalString(image); break;
        case Field::Color: good = optionalString(color); break;
        case Field::AppBundleID: good = sharedString(item.appBundleID); break;
        case Field::AppName: good = sharedString(item.appName); break;
        case Field::Rtf: good = optionalBase64(rtf); break;
        case Field::Html: good = optionalBase64(html); break;
        case Field::ImageWidth: good = optionalInt(imageWidth); break;
        case Field::ImageHeight: good = optionalInt(imageHeight); break;
        case Field::Files:
            if (in.peek() == 'n') {
                good = in.readNull();
                break;
            }
            files.emplace();
            good = in.expect('[');
            if (good && !in.take(']')) {
                do {
                    good = in.readString(&s);
                    files->append(s);
                } while (good && in.more(']'));
            }
            break;
        case Field::Unknown: good = in.skipValue(); break;
        }
        if (!good || !in.ok()) return false;
    } while (in.more('}'));
    if (rtf) item.setRtf(std::move(rtf));
    if (html) item.setHtml(std::move(html));
    // A name that is not Orlo's own never becomes a path; the item keeps the rest.
    if (image && ClipFolder::isImageName(*image)) item.setImage(std::move(image));
    if (imageWidth || imageHeight) item.setImageSize(imageWidth, imageHeight);
    if (files) item.setFiles(std::move(files));
    if (color) item.setColor(std::move(color));
    return in.ok() && hasId && hasKind && hasDate && hasPinned && hasSignature;
}

}  // namespace

bool ClipItemJson::readPart(QByteArrayView part, bool first, bool last, ClipHistoryFile::Part& out)
{
    JsonReader in(part);
    StringPool pool;
    if (first && !in.expect('[')) return false;
    if (first && last && in.take(']')) return in.atEnd();
    do {
        // Read where it is kept, rather than moved there.
        ClipItem& item = out.items.emplaceBack();
        if (!readItem(in, pool, item, out.signatureKeys.emplaceBack())) return false;
        if (item.pinned) out.pinned.append(out.items.size() - 1);
        if (item.image()) out.imageNames.append(*item.image());
        if (!last && in.atEnd()) return true;
    } while (in.more(']'));
    return last && in.atEnd();
}

}  // namespace orlo
