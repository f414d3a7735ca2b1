#include "platform/linux/XdgUserFiles.h"
#include "platform/posix/DiskUsage.h"
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <unistd.h>

namespace orlo {

static constexpr int OldCrashReportDays = 7;

XdgUserFiles::XdgUserFiles(const QString& home, const QString& cacheHome, const QString& dataHome, const QString& crashFolder)
    : home_(home), cacheHome_(cacheHome), dataHome_(dataHome), crashFolder_(crashFolder)
{
}

XdgUserFiles XdgUserFiles::forCurrentUser()
{
    const QString home = QDir::homePath();
    QString cache = qEnvironmentVariable("XDG_CACHE_HOME");
    if (cache.isEmpty()) cache = home + QStringLiteral("/.cache");
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (data.isEmpty()) data = home + QStringLiteral("/.local/share");
    return XdgUserFiles(home, cache, data, QStringLiteral("/var/crash"));
}

QList<XdgUserFiles::DeveloperCache> XdgUserFiles::developerCaches() const
{
    QList<DeveloperCache> caches{
        {QStringLiteral("npm"), QObject::tr("npm cache"), {home_ + QStringLiteral("/.npm/_cacache")}},
        {QStringLiteral("pip"), QObject::tr("pip cache"), {cacheHome_ + QStringLiteral("/pip")}},
        {QStringLiteral("cargo"), QObject::tr("Cargo registry cache"),
         {home_ + QStringLiteral("/.cargo/registry/cache"), home_ + QStringLiteral("/.cargo/registry/src")}},
        {QStringLiteral("go"), QObject::tr("Go build cache"), {cacheHome_ + QStringLiteral("/go-build")}},
        {QStringLiteral("gradle"), QObject::tr("Gradle caches"), {home_ + QStringLiteral("/.gradle/caches")}},
        {QStringLiteral("maven"), QObject::tr("Maven repository"), {home_ + QStringLiteral("/.m2/repository")}},
        {QStringLiteral("ccache"), QObject::tr("ccache"), {cacheHome_ + QStringLiteral("/ccache"), home_ + QStringLiteral("/.ccache")}},
    };
    for (DeveloperCache& cache : caches)
        cache.paths.removeIf([](const QString& path) { return !QFileInfo(path).isDir(); });
    caches.removeIf([](const DeveloperCache& cache) { return cache.paths.isEmpty(); });
    return caches;
}

QList<CleanupLocation> XdgUserFiles::cleanupLocations()
{
    const QList<DeveloperCache> developer = developerCaches();
    QSet<QString> developerPaths;
    for (const DeveloperCache& cache : developer)
        for (const QString& path : cache.paths) developerPaths.insert(QFileInfo(path).absoluteFilePath());

    // Every program's cache folder except the developer caches, which are listed on their own.
    CleanupLocation caches{QStringLiteral("caches"), QObject::tr("App caches"), {}};
    const QDir cacheDir(cacheHome_);
    for (const QFileInfo& entry : cacheDir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        if (!developerPaths.contains(entry.absoluteFilePath())) caches.paths << entry.absoluteFilePath();

    // Logs the session leaves behind, and crash reports older than a week.
    CleanupLocation logs{QStringLiteral("logs"), QObject::tr("Logs"), {}};
    for (const QString& path : {home_ + QStringLiteral("/.xsession-errors.old")})
        if (QFileInfo::exists(path)) logs.paths << path;
    for (const QFileInfo& entry : QDir(dataHome_ + QStringLiteral("/xorg")).entryInfoList({QStringLiteral("*.log.old")}, QDir::Files))
        logs.paths << entry.absoluteFilePath();
    const QDateTime weekAgo = QDateTime::currentDateTime().addDays(-OldCrashReportDays);
    for (const QFileInfo& entry : QDir(crashFolder_).entryInfoList({QStringLiteral("*.crash")}, QDir::Files))
        if (entry.ownerId() == getuid() && entry.lastModified() < weekAgo) logs.paths << entry.absoluteFilePath();

    QList<CleanupLocation> locations{caches, logs};
    for (const DeveloperCache& cache : developer) locations << CleanupLocation{cache.id, cache.title, cache.paths};
    return locations;
}

quint64 XdgUserFiles::sizeOnDisk(const QString& path, const std::atomic_bool& cancelled)
{
    return diskUsage(path, cancelled);
}

bool XdgUserFiles::moveToTrash(const QString& path, QString* error)
{
    // Qt only creates the Trash's own folder: without the folders above it, it would move
    // the file to a folder relative to the working directory.
    for (const char* sub : {"/files", "/info"}) {
        const QString folder = trashFolder() + QLatin1String(sub);
        if (QDir().mkpath(folder)) continue;
        if (error) *error = QObject::tr("The Trash folder %1 could not be made.").arg(folder);
        return false;
    }
    QFile::setPermissions(trashFolder(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    QFile file(path);
    if (file.moveToTrash()) return true;
    if (error) *error = QObject::tr("%1 could not be moved to the Trash: %2").arg(QFileInfo(path).fileName(), file.errorString());
    return false;
}

QString XdgUserFiles::trashFolder() const { return dataHome_ + QStringLiteral("/Trash"); }

quint64 XdgUserFiles::trashSize(const std::atomic_bool& cancelled)
{
    quint64 total = 0;
    const QDir files(trashFolder() + QStringLiteral("/files"));
    for (const QFileInfo& entry : files.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        total += sizeOnDisk(entry.absoluteFilePath(), cancelled);
    return total;
}

bool XdgUserFiles::emptyTrash(QString* error)
{
    bool emptied = true;
    for (const char* sub : {"files", "info", "expunged"}) {
        const QDir dir(trashFolder() + QLatin1Char('/') + QLatin1String(sub));
        for (const QFileInfo& entry : dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
            const bool removed = entry.isDir() && !entry.isSymLink() ? QDir(entry.absoluteFilePath()).removeRecursively()
                                                                    : QFile::remove(entry.absoluteFilePath());
            emptied = emptied && removed;
        }
    }
    QFile::remove(trashFolder() + QStringLiteral("/directorysizes"));
    if (!emptied && error) *error = QObject::tr("Some items in the Trash could not be removed.");
    return emptied;
}

}  // namespace orlo
