#include "platform/linux/MimePasteboard.h"
#include <QMimeData>
#include <QUrl>

namespace orlo {

namespace {
// Targets every selection owner answers that describe the selection rather than hold it,
// and the entry Qt adds on its own when it can convert an image.
const QStringList NotContent{QStringLiteral("TARGETS"), QStringLiteral("MULTIPLE"), QStringLiteral("TIMESTAMP"),
                             QStringLiteral("SAVE_TARGETS"), QStringLiteral("application/x-qt-image")};
const QString UriList = QStringLiteral("text/uri-list");
// What GNOME's file managers put beside (or instead of) the URI list: "copy" or "cut", then one URI a line.
const QString GnomeCopiedFiles = QStringLiteral("x-special/gnome-copied-files");
// GTK's colour: red, green, blue and alpha as four 16-bit numbers.
const QString ColorType = QStringLiteral("application/x-color");
}  // namespace

QStringList MimePasteboard::types()
{
    const QMimeData* mime = contents();
    if (!mime) return {};
    QStringList out;
    for (const QString& format : mime->formats())
        if (!NotContent.contains(format) && !out.contains(format)) out << format;
    return out;
}

QByteArray MimePasteboard::dataForType(const QString& type)
{
    const QMimeData* mime = contents();
    return mime && mime->hasFormat(type) ? mime->data(type) : QByteArray();
}

QByteArray MimePasteboard::data(Form form)
{
    const QMimeData* mime = contents();
    if (!mime) return {};
    const QStringList formats = mime->formats();
    auto first = [&](const QStringList& candidates) {
        for (const QString& type : candidates)
            if (formats.contains(type)) return mime->data(type);
        return QByteArray();
    };
    switch (form) {
    case Form::Rtf: return first({QStringLiteral("text/rtf"), QStringLiteral("application/rtf"), QStringLiteral("text/richtext")});
    case Form::Html: return first({QStringLiteral("text/html")});
    case Form::Png: return first({QStringLiteral("image/png")});
    case Form::Bitmap: {
        QStringList images;
        for (const QString& type : formats)
            if (type.startsWith(QLatin1String("image/")) && type != QLatin1String("image/png")) images << type;
        return first(images);
    }
    }
    return {};
}

std::optional<QString> MimePasteboard::string()
{
    const QMimeData* mime = contents();
    if (!mime || !mime->hasText()) return std::nullopt;
    return mime->text();
}

QStringList MimePasteboard::filePaths()
{
    const QMimeData* mime = contents();
    if (!mime) return {};
    QList<QUrl> urls = mime->urls();
    if (urls.isEmpty() && mime->hasFormat(GnomeCopiedFiles)) {
        const QList<QByteArray> lines = mime->data(GnomeCopiedFiles).split('\n');
        for (qsizetype i = 1; i < lines.size(); ++i)
            if (!lines[i].trimmed().isEmpty()) urls << QUrl::fromEncoded(lines[i].trimmed());
    }
    QStringList paths;
    for (const QUrl& url : urls)
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

std::optional<QColor> MimePasteboard::color()
{
    const QMimeData* mime = contents();
    if (!mime || !mime->hasFormat(ColorType)) return std::nullopt;
    // Qt may have made a colour of the bytes already.
    if (const QVariant value = mime->colorData(); value.typeId() == QMetaType::QColor && value.value<QColor>().isValid())
        return value.value<QColor>();
    const QByteArray bytes = mime->data(ColorType);
    if (bytes.size() < 8) return std::nullopt;
    const auto* channels = reinterpret_cast<const quint16*>(bytes.constData());
    return QColor::fromRgba64(channels[0], channels[1], channels[2], channels[3]);
}

QMimeData* MimePasteboard::mimeData(const Contents& contents)
{
    auto* mime = new QMimeData;
    if (!contents.rtf.isEmpty()) mime->setData(QStringLiteral("text/rtf"), contents.rtf);
    if (!contents.html.isEmpty()) mime->setData(QStringLiteral("text/html"), contents.html);
    if (!contents.png.isEmpty()) mime->setData(QStringLiteral("image/png"), contents.png);
    if (!contents.filePaths.isEmpty()) {
        QList<QUrl> urls;
        QByteArray gnome("copy");
        for (const QString& path : contents.filePaths) {
            urls << QUrl::fromLocalFile(path);
            gnome += '\n' + urls.last().toEncoded();
        }
        mime->setUrls(urls);
        mime->setData(GnomeCopiedFiles, gnome);
    }
    if (contents.color && contents.color->isValid()) {
        const QRgba64 c = contents.color->rgba64();
        quint16 channels[4] = {c.red(), c.green(), c.blue(), c.alpha()};
        mime->setData(ColorType, QByteArray(reinterpret_cast<const char*>(channels), sizeof channels));
    }
    if (contents.string) mime->setText(*contents.string);
    return mime;
}

}  // namespace orlo
