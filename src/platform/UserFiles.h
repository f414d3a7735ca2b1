#pragma once
#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>

namespace orlo {

// A group of files the user may clean up: the paths are removed as a whole.
struct CleanupLocation {
    QString id;
    QString title;
    QStringList paths{};
    // One entry of the programs' caches. They are listed together, each on its own row.
    bool appCache = false;
    // The running program that uses it (has files open in it, or goes by its name); empty
    // when none does.
    QString usedBy{};
};

// The user's files as the disk cleaner sees them. Sizes are measured on a worker thread;
// nothing here deletes a file: cleaning moves it to the Trash, and only emptying the Trash
// removes anything. Symbolic links are measured, moved and removed as links, never followed.
class UserFiles {
public:
    virtual ~UserFiles() = default;
    // Every entry of the programs' caches, "Logs", then the developer caches that exist.
    // Nothing that cannot be downloaded again is offered.
    virtual QList<CleanupLocation> cleanupLocations() = 0;
    // Bytes on disk under a path, not following symbolic links; stops early when cancelled.
    virtual quint64 sizeOnDisk(const QString& path, const std::atomic_bool& cancelled) = 0;
    // Moves a file or folder to the Trash; false with a reason when it could not.
    virtual bool moveToTrash(const QString& path, QString* error) = 0;
    // The user's Trash, with the Trash folders of the other mounted volumes.
    virtual quint64 trashSize(const std::atomic_bool& cancelled) = 0;
    virtual bool emptyTrash(QString* error) = 0;
};

}  // namespace orlo
