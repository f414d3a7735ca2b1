#pragma once
#include "clipboard/ClipItem.h"
#include <QDateTime>
#include <QIcon>
#include <QImage>
#include <QObject>
#include <optional>

namespace orlo {

class Workspace;

// The picker's small caches, shared by the whole process and used on the main thread:
// thumbnails of image items and icons of source applications; and the age text of a row.
namespace ClipAssets {

constexpr int ThumbnailMaxPixels = 96;

// The item's thumbnail when it is ready. Otherwise nothing, and the thumbnail is made in the
// background (a large image takes a while to decode); notifier() tells when it is ready.
std::optional<QImage> thumbnail(const ClipItem& item, const QString& imagesFolder);
// Makes a thumbnail at once: at most 96 pixels on its longer side, orientation applied.
std::optional<QImage> makeThumbnail(const QString& path);

// The source application's icon; nothing for an unknown application (which is asked again next time).
std::optional<QIcon> appIcon(const std::optional<QString>& bundleID, Workspace& workspace);

// "now" under a minute, else a short relative text such as "5 min. ago".
QString relative(const QDateTime& date, const QDateTime& now = QDateTime::currentDateTimeUtc());

// Empties the caches (for tests).
void clear();

class Notifier : public QObject {
    Q_OBJECT
signals:
    void thumbnailReady(const QString& imageName);
};
Notifier& notifier();

}  // namespace ClipAssets

}  // namespace orlo
