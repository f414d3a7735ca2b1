#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QSet>
#include <QString>
#include <QStringList>

namespace orlo {

// The folder of the clipboard history: "history.json", the unreadable histories kept aside
// beside it, and the "images" folder of PNG files. Everything in it is the user's alone.
// Only touches the file system, so it may be used from any thread.
class ClipFolder {
public:
    explicit ClipFolder(QString path) : path_(std::move(path)) {}

    QString path() const { return path_; }
    QString imagesPath() const;
    QString historyPath() const;

    // Creates what is missing and makes every folder 0700 and every file 0600, also when
    // they existed with looser bits; false when the folders cannot be made.
    bool makePrivate() const;
    // Whether a name is one Orlo gives its image files ("<UUID>.png"). A name read from the
    // history becomes a path in the images folder only when it is: any other could reach
    // outside it ("../../.bashrc", an absolute path).
    static bool isImageName(QStringView name);
    // Writes one image file, privately and atomically.
    bool writeImage(const QString& name, const QByteArray& png) const;
    void removeImage(const QString& name) const;

    // The unreadable histories kept aside ("history.json.unreadable-<time>").
    QStringList asideCopies() const;
    void removeAsideCopies() const;
    // Deletes the image files that neither an item nor a history kept aside names, when they
    // are older than `before` (newer ones belong to copies being recorded). Nothing is deleted
    // while a history kept aside cannot be read: its images are not known.
    void removeOrphanImages(const QSet<QString>& named, const QDateTime& before) const;

private:
    QString path_;
};

}  // namespace orlo
