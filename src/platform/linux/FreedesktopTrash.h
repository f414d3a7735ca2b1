#pragma once
#include <QString>
#include <QStringList>
#include <functional>

namespace orlo {

// The freedesktop Trash: the user's own in their data folder, and a $topdir/.Trash-$uid (or
// $topdir/.Trash/$uid) folder at the top of other mounted volumes. Symbolic links are moved
// and removed as links, never followed; a Trash folder that is itself a link, or is not the
// user's, is left alone.
class FreedesktopTrash {
public:
    // homeTrash: the user's Trash folder; volumeRoots: where the mounted volumes start.
    FreedesktopTrash(const QString& homeTrash, std::function<QStringList()> volumeRoots);
    static QStringList mountedVolumeRoots();

    bool moveToTrash(const QString& path, QString* error) const;
    // What every Trash folder holds, each item as it lies in its "files" folder.
    QStringList items() const;
    // Removes everything in every Trash folder; false when something could not be removed.
    bool empty() const;

private:
    QStringList folders() const;
    QString folderFor(const QString& path, QString* error) const;

    QString homeTrash_;
    std::function<QStringList()> volumeRoots_;
};

}  // namespace orlo
