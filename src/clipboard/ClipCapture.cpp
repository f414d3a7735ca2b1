#include "clipboard/ClipCapture.h"
#include "platform/Pasteboard.h"
#include <QBuffer>
#include <QImage>
#include <QImageReader>

namespace orlo {

namespace {
bool hasVisibleText(const QString& text)
{
    for (QChar c : text)
        if (!c.isSpace()) return true;
    return false;
}

QByteArray toPng(const QByteArray& bitmap)
{
    QBuffer source;
    source.setData(bitmap);
    source.open(QIODevice::ReadOnly);
    QImageReader reader(&source);
    // The size comes from the header. Qt refuses to decode images above its allocation limit
    // (256 MB by default), which a screenshot of a large canvas passes: the limit is raised
    // to what this image needs, up to a ceiling that keeps a lying header from taking all memory.
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty()) return {};
    const qint64 megabytes = qint64(size.width()) * size.height() * 4 / (1 << 20) + 1;
    if (megabytes > ClipCapture::MaxDecodedMegabytes) return {};
    if (const int limit = QImageReader::allocationLimit(); limit != 0 && limit < megabytes)
        QImageReader::setAllocationLimit(int(megabytes));
    const QImage image = reader.read();
    if (image.isNull()) return {};
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? png : QByteArray();
}
}  // namespace

ClipCapture::Pending ClipCapture::read(Pasteboard& pasteboard)
{
    if (const QStringList paths = pasteboard.filePaths(); !paths.isEmpty())
        return {[paths] { return std::optional(Result{ClipItem::makeFiles(paths), {}}); }};

    if (auto text = pasteboard.string(); text && hasVisibleText(*text)) {
        auto form = [&](Pasteboard::Form f) {
            QByteArray bytes = pasteboard.data(f);
            return bytes.isEmpty() ? std::nullopt : std::optional(bytes);
        };
        const bool heavy = text->size() > HeavyTextChars;
        return {[text = std::move(*text), rtf = form(Pasteboard::Form::Rtf), html = form(Pasteboard::Form::Html)] {
                    return std::optional(Result{ClipItem::makeText(text, rtf, html), {}});
                },
                heavy};
    }

    // An image that turns out not to be one leaves the colour, the last resort.
    std::optional<QString> hex;
    if (const auto color = pasteboard.color()) hex = ClipItem::hex(*color);
    auto colour = [hex]() -> std::optional<Result> {
        if (!hex) return std::nullopt;
        return Result{ClipItem::makeColor(*hex), {}};
    };
    QByteArray bytes = pasteboard.data(Pasteboard::Form::Png);
    const bool isPng = !bytes.isEmpty();
    if (!isPng) bytes = pasteboard.data(Pasteboard::Form::Bitmap);
    if (!bytes.isEmpty()) {
        return {[bytes, isPng, colour] {
                    auto result = image(bytes, isPng);
                    return result ? result : colour();
                },
                true};
    }
    if (hex) return {colour};
    return {};
}

std::optional<ClipCapture::Result> ClipCapture::capture(Pasteboard& pasteboard)
{
    const Pending pending = read(pasteboard);
    return pending.finish ? pending.finish() : std::nullopt;
}

std::optional<ClipCapture::Result> ClipCapture::image(const QByteArray& bytes, bool isPng)
{
    QByteArray png = isPng ? bytes : toPng(bytes);
    if (png.isEmpty() || png.size() >= ClipItem::MaxPngBytes) return std::nullopt;
    QBuffer buffer(&png);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.canRead() ? reader.size() : QSize();
    if (!size.isValid() || size.isEmpty()) return std::nullopt;
    return Result{ClipItem::makeImage(png, size.width(), size.height()), png};
}

}  // namespace orlo
