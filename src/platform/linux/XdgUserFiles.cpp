#include "platform/linux/XdgUserFiles.h"
#include "platform/posix/DiskUsage.h"
#include "platform/linux/ProcFsFolderUsers.h"
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <unistd.h>

namespace orlo {

static constexpr int OldCrashReportDays = 7;

XdgUserFiles::XdgUserFiles(const QString& home, const QString& cacheHome, const QString& dataHome, const QString& crashFolder,
                           std::function<QStringList()> volumeRoots)
    : home_(home), cacheHome_(cacheHome), dataHome_(dataHome), crashFolder_(crashFolder),
      trash_(dataHome + QStringLiteral("/Trash"), std::move(volumeRoots))
{
}

XdgUserFiles XdgUserFiles::forCurrentUser()
{
    const QString home = QDir::homePath();
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (data.isEmpty()) data = home + QStringLiteral("/.local/share");
    return XdgUserFiles(home, cacheHome(qEnvironmentVariable("XDG_CACHE_HOME"), home, data), data, QStringLiteral("/var/crash"));
}

// The path with its links resolved as far as it exists, and cleaned.
static QString resolved(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return QDir::cleanPath(canonical.isEmpty() ? path : canonical);
}

static bool holds(const QString& folder, const QString& path)
{
    return path == folder || folder == QLatin1String("/") || path.startsWith(folder + QLatin1Char('/'));
}

QString XdgUserFiles::cacheHome(const QString& variable, const QString& home, const QString& dataHome)
{
    const QString fallback = home + QStringLiteral("/.cache");
    if (variable.isEmpty() || QDir::isRelativePath(variable)) return fallback;
    const QString cache = resolved(variable);
    for (const QString& refused : {QStringLiteral("/tmp"), QStringLiteral("/var/tmp")})
        if (cache == resolved(refused)) return fallback;
    for (const QString& kept : {home, dataHome})
        if (!kept.isEmpty() && (holds(cache, resolved(kept)) || holds(cache, QDir::cleanPath(kept)))) return fallback;
    return QDir::cleanPath(variable);
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

    // Each program's cache on its own, except the developer caches, which are listed apart.
    QList<CleanupLocation> caches;
    const QHash<QString, QString> users = ProcFsFolderUsers::programsUsingEntriesOf(cacheHome_);
    const QDir cacheDir(cacheHome_);
    for (const QFileInfo& entry : cacheDir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
        if (developerPaths.contains(entry.absoluteFilePath())) continue;
        caches << CleanupLocation{QStringLiteral("cache:") + entry.fileName(), entry.fileName(), {entry.absoluteFilePath()}, true,
                                  users.value(entry.fileName())};
    }

    // Logs the session leaves behind, and crash reports older than a week.
    CleanupLocation logs{.id = QStringLiteral("logs"), .title = QObject::tr("Logs")};
    for (const QString& path : {home_ + QStringLiteral("/.xsession-errors.old")})
        if (QFileInfo::exists(path)) logs.paths << path;
    for (const QFileInfo& entry : QDir(dataHome_ + QStringLiteral("/xorg")).entryInfoList({QStringLiteral("*.log.old")}, QDir::Files))
        logs.paths << entry.absoluteFilePath();
    const QDateTime weekAgo = QDateTime::currentDateTime().addDays(-OldCrashReportDays);
    for (const QFileInfo& entry : QDir(crashFolder_).entryInfoList({QStringLiteral("*.crash")}, QDir::Files))
        if (entry.ownerId() == getuid() && entry.lastModified() < weekAgo) logs.paths << entry.absoluteFilePath();

    QList<CleanupLocation> locations = caches;
    locations << logs;
    for (const DeveloperCache& cache : developer) locations << CleanupLocation{.id = cache.id, .title = cache.title, .paths = cache.paths};
    return locations;
}

quint64 XdgUserFiles::sizeOnDisk(const QString& path, const std::atomic_bool& cancelled)
{
    return diskUsage(path, cancelled);
}

bool XdgUserFiles::moveToTrash(const QString& path, QString* error) { return trash_.moveToTrash(path, error); }

quint64 XdgUserFiles::trashSize(const std::atomic_bool& cancelled)
{
    quint64 total = 0;
    for (const QString& item : trash_.items()) total += sizeOnDisk(item, cancelled);
    return total;
}

bool XdgUserFiles::emptyTrash(QString* error)
{
    if (trash_.empty()) return true;
    if (error) *error = QObject::tr("Some items in the Trash could not be removed.");
    return false;
}

}  // namespace orlo
