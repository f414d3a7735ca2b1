#include "clipboard/ClipItem.h"
#include <QFileInfo>
#include <cmath>

namespace orlo {

QString ClipItem::kindName(Kind kind)
{
    switch (kind) {
    case Kind::Text: return QStringLiteral("text");
    case Kind::Image: return QStringLiteral("image");
    case Kind::Files: return QStringLiteral("files");
    case Kind::Color: return QStringLiteral("color");
    }
    return {};
}

std::optional<ClipItem::Kind> ClipItem::kindFromName(const QString& name)
{
    for (Kind kind : {Kind::Text, Kind::Image, Kind::Files, Kind::Color})
        if (kindName(kind) == name) return kind;
    return std::nullopt;
}

ClipSignature ClipItem::textSignature(const QString& text) { return ClipSignature::ofContent('t', text.toUtf8()); }
ClipSignature ClipItem::imageSignature(const QByteArray& png) { return ClipSignature::ofContent('i', png); }
ClipSignature ClipItem::filesSignature(const QString& joinedPaths) { return ClipSignature::ofContent('f', joinedPaths.toUtf8()); }
ClipSignature ClipItem::colorSignature(const QString& hex) { return ClipSignature::fromText(QStringLiteral("c:") + hex); }

std::optional<QString> ClipItem::hex(const QColor& color)
{
    if (!color.isValid()) return std::nullopt;
    const QColor rgb = color.toRgb();
    auto byte = [](float channel) { return int(std::lround(channel * 255.0f)); };
    const int r = byte(rgb.redF()), g = byte(rgb.greenF()), b = byte(rgb.blueF()), a = byte(rgb.alphaF());
    auto two = [](int v) { return QStringLiteral("%1").arg(v, 2, 16, QLatin1Char('0')).toUpper(); };
    QString text = QLatin1Char('#') + two(r) + two(g) + two(b);
    if (a != 255) text += two(a);
    return text;
}

std::optional<QColor> ClipItem::colorFromHex(const QString& hex)
{
    QString digits = hex;
    while (digits.startsWith(QLatin1Char('#'))) digits.remove(0, 1);
    while (digits.endsWith(QLatin1Char('#'))) digits.chop(1);
    if (digits.size() != 6 && digits.size() != 8) return std::nullopt;
    bool ok = false;
    quint32 value = digits.toUInt(&ok, 16);
    // toUInt accepts a sign and "0x"; only plain hex digits are a colour.
    for (QChar c : digits)
        if (!isxdigit(c.toLatin1())) ok = false;
    if (!ok) return std::nullopt;
    if (digits.size() == 6) value = (value << 8) | 0xFF;
    QColor c;
    c.setRgbF(float((value >> 24) & 0xFF) / 255.0f, float((value >> 16) & 0xFF) / 255.0f, float((value >> 8) & 0xFF) / 255.0f,
              float(value & 0xFF) / 255.0f);
    return c;
}

ClipItem::ClipItem(const ClipItem& other)
    : id(other.id), kind(other.kind), pinned(other.pinned), text(other.text), appBundleID(other.appBundleID),
      appName(other.appName), date(other.date), signature(other.signature),
      forms_(other.forms_ ? std::make_unique<Forms>(*other.forms_) : nullptr)
{
}

ClipItem& ClipItem::operator=(const ClipItem& other)
{
    if (this != &other) *this = ClipItem(other);
    return *this;
}

bool ClipItem::operator==(const ClipItem& other) const
{
    return id == other.id && kind == other.kind && pinned == other.pinned && text == other.text
           && appBundleID == other.appBundleID && appName == other.appName && date == other.date
           && signature == other.signature && forms() == other.forms();
}

const ClipItem::Forms& ClipItem::forms() const
{
    static const Forms none;
    return forms_ ? *forms_ : none;
}

ClipItem::Forms& ClipItem::editForms()
{
    if (!forms_) forms_ = std::make_unique<Forms>();
    return *forms_;
}

void ClipItem::setImageSize(std::optional<int> width, std::optional<int> height)
{
    Forms& forms = editForms();
    forms.imageWidth = width;
    forms.imageHeight = height;
}

static ClipItem fresh(ClipItem::Kind kind)
{
    ClipItem item;
    item.id = QUuid::createUuid();
    item.kind = kind;
    item.date = QDateTime::currentDateTimeUtc();
    return item;
}

ClipItem ClipItem::makeText(const QString& text, std::optional<QByteArray> rtf, std::optional<QByteArray> html)
{
    ClipItem item = fresh(Kind::Text);
    item.text = text;
    if (rtf && rtf->size() <= MaxRichBytes) item.setRtf(std::move(rtf));
    if (html && html->size() <= MaxRichBytes) item.setHtml(std::move(html));
    item.signature = textSignature(text);
    return item;
}

ClipItem ClipItem::makeImage(const QByteArray& png, int width, int height)
{
    ClipItem item = fresh(Kind::Image);
    item.setImageSize(width, height);
    item.signature = imageSignature(png);
    return item;
}

ClipItem ClipItem::makeFiles(const QStringList& paths)
{
    ClipItem item = fresh(Kind::Files);
    item.setFiles(paths);
    item.text = paths.join(QLatin1Char('\n'));
    item.signature = filesSignature(*item.text);
    return item;
}

ClipItem ClipItem::makeColor(const QString& hex)
{
    ClipItem item = fresh(Kind::Color);
    item.text = hex;
    item.setColor(hex);
    item.signature = colorSignature(hex);
    return item;
}

QStringList ClipItem::fileNames() const
{
    QStringList names;
    if (files())
        for (const QString& path : *files()) names << QFileInfo(path).fileName();
    return names;
}

QString ClipItem::title() const
{
    switch (kind) {
    case Kind::Color: return color().value_or(QStringLiteral("Color"));
    case Kind::Files: {
        const QStringList names = fileNames();
        if (names.size() == 1) return names.first();
        return QStringLiteral("%1 + %2 more").arg(names.value(0)).arg(names.size() - 1);
    }
    case Kind::Image:
        if (imageWidth() && imageHeight()) return QStringLiteral("Image %1\u00D7%2").arg(*imageWidth()).arg(*imageHeight());
        return QStringLiteral("Image");
    case Kind::Text: {
        if (!text) return {};
        // Only the first non-blank line matters, and only its first 200 characters: a copy
        // of hundreds of megabytes is read no further than that.
        auto isNewline = [](QChar c) {
            const char16_t u = c.unicode();
            return u == '\n' || u == '\r' || u == 0x0B || u == 0x0C || u == 0x85 || u == 0x2028 || u == 0x2029;
        };
        const QStringView t(*text);
        qsizetype start = 0;
        while (start < t.size() && t[start].isSpace()) ++start;  // blank lines and leading blanks
        if (start == t.size()) return {};
        qsizetype end = start;
        while (end < t.size() && end - start < 200 && !isNewline(t[end])) ++end;
        // Blanks at the cut are kept only when more of the line follows them.
        qsizetype next = end;
        while (next < t.size() && t[next].isSpace() && !isNewline(t[next])) ++next;
        const bool lineGoesOn = next < t.size() && !isNewline(t[next]);
        const QStringView line = t.sliced(start, end - start);
        return (lineGoesOn ? line : line.trimmed()).toString();
    }
    }
    return {};
}

QString ClipItem::symbol() const
{
    switch (kind) {
    case Kind::Text: return rtf() || html() ? QStringLiteral("doc.richtext") : QStringLiteral("text.alignleft");
    case Kind::Image: return QStringLiteral("photo");
    case Kind::Files: return files() && files()->size() > 1 ? QStringLiteral("doc.on.doc") : QStringLiteral("doc");
    case Kind::Color: return QStringLiteral("paintpalette");
    }
    return {};
}

}  // namespace orlo
