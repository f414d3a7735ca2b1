#pragma once
#include "platform/UserFiles.h"
#include "platform/linux/FreedesktopTrash.h"

namespace orlo {

// The user's caches and logs in the places Linux programs keep them, and the freedesktop
// Trash in the user's data folder and on the other mounted volumes.
class XdgUserFiles : public UserFiles {
public:
    // home, cache and data: the folders to look in (tests point them at temporary folders);
    // volumeRoots: where the mounted volumes start, for their Trash folders.
    XdgUserFiles(const QString& home, const QString& cacheHome, const QString& dataHome, const QString& crashFolder,
                 std::function<QStringList()> volumeRoots = FreedesktopTrash::mountedVolumeRoots);
    static XdgUserFiles forCurrentUser();
    // The caches folder XDG_CACHE_HOME names, unless moving its entries to the Trash could
    // take more than caches: a relative path, the root, /tmp, the home folder or a folder
    // holding it, or one holding the data folder (where the Trash is). Then ~/.cache.
    static QString cacheHome(const QString& variable, const QString& home, const QString& dataHome);

    QList<CleanupLocation> cleanupLocations() override;
    quint64 sizeOnDisk(const QString& path, const std::atomic_bool& cancelled) override;
    bool moveToTrash(const QString& path, QString* error) override;
    quint64 trashSize(const std::atomic_bool& cancelled) override;
    bool emptyTrash(QString* error) override;

private:
    struct DeveloperCache {
        QString id;
        QString title;
        QStringList paths;
    };
    QList<DeveloperCache> developerCaches() const;

    QString home_;
    QString cacheHome_;
    QString dataHome_;
    QString crashFolder_;
    FreedesktopTrash trash_;
};

}  // namespace orlo
