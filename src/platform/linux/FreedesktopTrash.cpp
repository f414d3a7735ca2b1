#include "platform/linux/FreedesktopTrash.h"
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QStorageInfo>
#include <QUrl>
#include <cerrno>
#include <cstring>
#include <optional>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orlo {

FreedesktopTrash::FreedesktopTrash(const QString& homeTrash, std::function<QStringList()> volumeRoots)
    : homeTrash_(QDir::cleanPath(homeTrash)), volumeRoots_(std::move(volumeRoots))
{
}

QStringList FreedesktopTrash::mountedVolumeRoots()
{
    QStringList roots;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
        if (volume.isValid() && volume.isReady()) roots << volume.rootPath();
    return roots;
}

static std::optional<struct stat> statOf(const QString& path)
{
    struct stat entry{};
    if (::lstat(QFile::encodeName(path).constData(), &entry) != 0) return std::nullopt;
    return entry;
}

// A folder of the user's own, not a link to one.
static bool isOwnFolder(const QString& path)
{
    const auto entry = statOf(path);
    return entry && S_ISDIR(entry->st_mode) && entry->st_uid == getuid();
}

static bool makeOwnFolder(const QString& path)
{
    ::mkdir(QFile::encodeName(path).constData(), 0700);
    return isOwnFolder(path);
}

// $topdir/.Trash/$uid when the volume's administrator made a shared .Trash (a sticky folder,
// not a link), else $topdir/.Trash-$uid.
static QStringList topTrashFolders(const QString& root)
{
    const QString uid = QString::number(getuid());
    QStringList folders;
    const auto shared = statOf(root + QStringLiteral("/.Trash"));
    if (shared && S_ISDIR(shared->st_mode) && (shared->st_mode & S_ISVTX)) folders << root + QStringLiteral("/.Trash/") + uid;
    folders << root + QStringLiteral("/.Trash-") + uid;
    return folders;
}

QStringList FreedesktopTrash::folders() const
{
    QStringList found;
    if (isOwnFolder(homeTrash_)) found << homeTrash_;
    for (const QString& root : volumeRoots_())
        for (const QString& folder : topTrashFolders(QDir::cleanPath(root)))
            if (!found.contains(QDir::cleanPath(folder)) && isOwnFolder(folder)) found << QDir::cleanPath(folder);
    return found;
}

// The Trash folder on the same volume as the path, made when it is missing.
QString FreedesktopTrash::folderFor(const QString& path, QString* error) const
{
    const auto entry = statOf(path);
    if (!entry) return {};
    QDir().mkpath(QFileInfo(homeTrash_).absolutePath());
    const bool homeTrashReady = makeOwnFolder(homeTrash_);
    const auto home = statOf(homeTrash_);
    if (homeTrashReady && home && home->st_dev == entry->st_dev) return homeTrash_;
    // The top of the path's volume: the last folder up from it on the same device.
    QString root = QFileInfo(path).absolutePath();
    for (QString up = QFileInfo(root).absolutePath(); up != root; up = QFileInfo(root).absolutePath()) {
        const auto above = statOf(up);
        if (!above || above->st_dev != entry->st_dev) break;
        root = up;
    }
    for (const QString& folder : topTrashFolders(root))
        if (makeOwnFolder(folder)) return folder;
    if (error) *error = QObject::tr("%1 could not be moved to the Trash: its volume has no Trash folder of yours.").arg(QFileInfo(path).fileName());
    return {};
}

bool FreedesktopTrash::moveToTrash(const QString& path, QString* error) const
{
    const QString name = QFileInfo(path).fileName();
    if (!statOf(path)) {
        if (error) *error = QObject::tr("%1 could not be moved to the Trash: it is no longer there.").arg(name);
        return false;
    }
    const QString folder = folderFor(path, error);
    if (folder.isEmpty()) return false;
    if (!makeOwnFolder(folder + QStringLiteral("/files")) || !makeOwnFolder(folder + QStringLiteral("/info"))) {
        if (error) *error = QObject::tr("The Trash folder %1 could not be made.").arg(folder);
        return false;
    }
    // The info file claims the name: "name", then "name.2", "name.3"…
    const QByteArray info = "[Trash Info]\nPath=" + QUrl::toPercentEncoding(QFileInfo(path).absoluteFilePath(), "/")
                            + "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toUtf8() + '\n';
    for (int n = 1; n < 10000; ++n) {
        const QString trashed = n == 1 ? name : QStringLiteral("%1.%2").arg(name).arg(n);
        const QByteArray infoPath = QFile::encodeName(folder + QStringLiteral("/info/") + trashed + QStringLiteral(".trashinfo"));
        const int fd = ::open(infoPath.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0 && errno == EEXIST) continue;
        if (fd < 0) break;
        const bool written = ::write(fd, info.constData(), size_t(info.size())) == info.size();
        ::close(fd);
        const QString target = folder + QStringLiteral("/files/") + trashed;
        // rename() moves a link itself, never what it points to.
        if (written && !statOf(target) && ::rename(QFile::encodeName(path).constData(), QFile::encodeName(target).constData()) == 0)
            return true;
        const int reason = errno;
        ::unlink(infoPath.constData());
        if (written && statOf(target)) continue;
        if (error) *error = QObject::tr("%1 could not be moved to the Trash: %2").arg(name, QString::fromLocal8Bit(strerror(reason)));
        return false;
    }
    if (error) *error = QObject::tr("%1 could not be moved to the Trash.").arg(name);
    return false;
}

QStringList FreedesktopTrash::items() const
{
    QStringList items;
    for (const QString& folder : folders()) {
        const QString files = folder + QStringLiteral("/files");
        if (!isOwnFolder(files)) continue;
        for (const QString& name : QDir(files).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
            items << files + QLatin1Char('/') + name;
    }
    return items;
}

bool FreedesktopTrash::empty() const
{
    bool emptied = true;
    for (const QString& folder : folders()) {
        for (const char* sub : {"/files", "/info", "/expunged"}) {
            const QString dir = folder + QLatin1String(sub);
            if (!isOwnFolder(dir)) continue;
            for (const QString& name : QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
                const QString path = dir + QLatin1Char('/') + name;
                const auto entry = statOf(path);
                // removeRecursively() removes the links it meets inside as links too.
                const bool removed = entry && S_ISDIR(entry->st_mode) ? QDir(path).removeRecursively()
                                                                      : ::unlink(QFile::encodeName(path).constData()) == 0;
                emptied = emptied && removed;
            }
        }
        QFile::remove(folder + QStringLiteral("/directorysizes"));
    }
    return emptied;
}

}  // namespace orlo
