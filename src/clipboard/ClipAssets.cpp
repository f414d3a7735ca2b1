#include "clipboard/ClipAssets.h"
#include "kit/ThreadHandOff.h"
#include "platform/Workspace.h"
#include <QCache>
#include <QDir>
#include <QHash>
#include <QImageReader>
#include <QSet>
#include <QThreadPool>

namespace orlo::ClipAssets {

namespace {
struct Caches {
    // Thumbnails are small, but a long history holds many: keep the most recent 64 MB.
    QCache<QString, QImage> thumbnails{64 * 1024 * 1024};
    QSet<QString> loading;
    QHash<QString, QIcon> icons;
};

Caches& caches()
{
    static Caches c;
    return c;
}
}  // namespace

Notifier& notifier()
{
    static Notifier n;
    return n;
}

std::optional<QImage> makeThumbnail(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (!size.isValid()) return std::nullopt;
    // The size before orientation is applied: a rotated image swaps its sides, which does not change the scale.
    if (size.width() > ThumbnailMaxPixels || size.height() > ThumbnailMaxPixels)
        size.scale(ThumbnailMaxPixels, ThumbnailMaxPixels, Qt::KeepAspectRatio);
    size = size.expandedTo(QSize(1, 1));
    // Decoding at the small size is what keeps large screenshots cheap, but the reader loses
    // the colours of palette images that way: those are read whole and scaled after.
    const QImage::Format format = reader.imageFormat();
    const bool palette = format == QImage::Format_Mono || format == QImage::Format_MonoLSB || format == QImage::Format_Indexed8;
    if (!palette) reader.setScaledSize(size);
    QImage image = reader.read();
    if (image.isNull()) return std::nullopt;
    if (palette)
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

std::optional<QImage> thumbnail(const ClipItem& item, const QString& imagesFolder)
{
    if (!item.image()) return std::nullopt;
    Caches& c = caches();
    const QString name = *item.image();
    if (const QImage* cached = c.thumbnails.object(name)) return *cached;
    if (c.loading.contains(name)) return std::nullopt;
    c.loading.insert(name);
    const QString path = QDir(imagesFolder).filePath(name);
    // The notifier must belong to this (the main) thread, which the result is handed back to.
    Notifier& main = notifier();
    threads::start(*QThreadPool::globalInstance(), [name, path, &main] {
        auto image = makeThumbnail(path);
        threads::handOff();
        QMetaObject::invokeMethod(&main, [name, image = std::move(image)] {
            threads::takeOver();
            Caches& c = caches();
            c.loading.remove(name);
            if (!image) return;
            c.thumbnails.insert(name, new QImage(*image), int(image->sizeInBytes()));
            emit notifier().thumbnailReady(name);
        });
    });
    return std::nullopt;
}

std::optional<QIcon> appIcon(const std::optional<QString>& bundleID, Workspace& workspace)
{
    if (!bundleID || bundleID->isEmpty()) return std::nullopt;
    Caches& c = caches();
    if (auto it = c.icons.constFind(*bundleID); it != c.icons.constEnd()) return *it;
    const QIcon icon = workspace.applicationIcon(*bundleID);
    if (icon.isNull()) return std::nullopt;
    c.icons.insert(*bundleID, icon);
    return icon;
}

QString relative(const QDateTime& date, const QDateTime& now)
{
    const qint64 seconds = date.secsTo(now);
    if (seconds < 60) return QStringLiteral("now");
    QString amount;
    if (seconds < 3600) amount = QStringLiteral("%1 min.").arg(seconds / 60);
    else if (seconds < 86400) amount = QStringLiteral("%1 hr.").arg(seconds / 3600);
    else if (seconds < 7 * 86400) amount = seconds < 2 * 86400 ? QStringLiteral("1 day") : QStringLiteral("%1 days").arg(seconds / 86400);
    else if (seconds < 30 * 86400) amount = QStringLiteral("%1 wk.").arg(seconds / (7 * 86400));
    else if (seconds < 365 * 86400) amount = QStringLiteral("%1 mo.").arg(seconds / (30 * 86400));
    else amount = QStringLiteral("%1 yr.").arg(seconds / (365 * 86400));
    return amount + QStringLiteral(" ago");
}

void clear()
{
    Caches& c = caches();
    c.thumbnails.clear();
    c.icons.clear();
}

}  // namespace orlo::ClipAssets
