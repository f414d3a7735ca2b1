#pragma once
#include "platform/UserFiles.h"

namespace orlo {

// The user's caches and logs in the places Linux programs keep them, and the freedesktop
// Trash in the user's data folder.
class XdgUserFiles : public UserFiles {
public:
    // home, cache and data: the folders to look in (tests point them at temporary folders).
    XdgUserFiles(const QString& home, const QString& cacheHome, const QString& dataHome, const QString& crashFolder);
    static XdgUserFiles forCurrentUser();

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
    QString trashFolder() const;

    QString home_;
    QString cacheHome_;
    QString dataHome_;
    QString crashFolder_;
};

}  // namespace orlo
