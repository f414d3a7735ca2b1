#include "platform/mac/MacUserFiles.h"
#include "platform/mac/MacScripting.h"
#include "platform/posix/DiskUsage.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>
#include <QSet>

// No Core Foundation object is created here; the Trash is reached through Qt and the Finder.
namespace orlo::mac {

namespace {
struct Cache {
    QString id;
    QString title;
    QStringList relativePaths;  // under the home folder
};

QList<Cache> developerCaches()
{
    return {
        {QStringLiteral("xcode"), QObject::tr("Xcode derived data"), {QStringLiteral("Library/Developer/Xcode/DerivedData")}},
        {QStringLiteral("simulators"), QObject::tr("Simulator caches"), {QStringLiteral("Library/Developer/CoreSimulator/Caches")}},
        {QStringLiteral("homebrew"), QObject::tr("Homebrew downloads"), {QStringLiteral("Library/Caches/Homebrew")}},
        {QStringLiteral("npm"), QObject::tr("npm cache"), {QStringLiteral(".npm/_cacache")}},
        {QStringLiteral("pip"), QObject::tr("pip cache"), {QStringLiteral("Library/Caches/pip")}},
        {QStringLiteral("cargo"), QObject::tr("Cargo registry cache"),
         {QStringLiteral(".cargo/registry/cache"), QStringLiteral(".cargo/registry/src")}},
        {QStringLiteral("go"), QObject::tr("Go build cache"), {QStringLiteral("Library/Caches/go-build")}},
        {QStringLiteral("gradle"), QObject::tr("Gradle caches"), {QStringLiteral(".gradle/caches")}},
        {QStringLiteral("maven"), QObject::tr("Maven repository"), {QStringLiteral(".m2/repository")}},
    };
}
}  // namespace

MacUserFiles::MacUserFiles(const QString& home, MacScripting& scripting) : home_(home), scripting_(scripting) {}

QList<CleanupLocation> MacUserFiles::cleanupLocations()
{
    QList<CleanupLocation> developer;
    QSet<QString> developerPaths;
    for (const Cache& cache : developerCaches()) {
        CleanupLocation location{cache.id, cache.title, {}};
        for (const QString& relative : cache.relativePaths) {
            const QString path = QDir(home_).filePath(relative);
            if (!QFileInfo(path).isDir()) continue;
            location.paths << path;
            developerPaths.insert(path);
        }
        if (!location.paths.isEmpty()) developer << location;
    }

    auto contents = [&](const QString& relative, const QString& id, const QString& title) {
        CleanupLocation location{id, title, {}};
        const QDir folder(QDir(home_).filePath(relative));
        for (const QFileInfo& entry : folder.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
            if (!developerPaths.contains(entry.absoluteFilePath())) location.paths << entry.absoluteFilePath();
        return location;
    };
    QList<CleanupLocation> locations{contents(QStringLiteral("Library/Caches"), QStringLiteral("caches"), QObject::tr("App caches")),
                                     contents(QStringLiteral("Library/Logs"), QStringLiteral("logs"), QObject::tr("Logs"))};
    return locations + developer;
}

quint64 MacUserFiles::sizeOnDisk(const QString& path, const std::atomic_bool& cancelled) { return diskUsage(path, cancelled); }

bool MacUserFiles::moveToTrash(const QString& path, QString* error)
{
    // Qt moves it with NSFileManager, so that the Finder's Put Back knows where it came from.
    QFile file(path);
    if (file.moveToTrash()) return true;
    if (error) *error = QObject::tr("%1 could not be moved to the Trash: %2").arg(QFileInfo(path).fileName(), file.errorString());
    return false;
}

quint64 MacUserFiles::trashSize(const std::atomic_bool& cancelled)
{
    // Reading ~/.Trash may need Full Disk Access: without it the Trash measures 0.
    quint64 total = 0;
    const QDir trash(QDir(home_).filePath(QStringLiteral(".Trash")));
    for (const QFileInfo& entry : trash.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        total += diskUsage(entry.absoluteFilePath(), cancelled);
    return total;
}

bool MacUserFiles::emptyTrash(QString* error)
{
    // Through the Finder, which empties the Trash of every volume and plays its own sound.
    const auto result = scripting_.run(QStringLiteral("tell application id \"com.apple.finder\" to empty trash"));
    if (std::holds_alternative<QString>(result)) return true;
    if (error) {
        const int code = std::get<Scripting::Failure>(result).code;
        *error = code == -1743 ? QObject::tr("Orlo may not control the Finder: allow it in System Settings › Privacy & Security › Automation.")
                               : QObject::tr("The Finder could not empty the Trash (error %1).").arg(code);
    }
    return false;
}

}  // namespace orlo::mac
