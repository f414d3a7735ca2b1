#include "clipboard/ClipFolder.h"
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace orlo {

namespace {
constexpr QFileDevice::Permissions PrivateFolder = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr QFileDevice::Permissions PrivateFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ForGroupOrOthers = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
                                                     | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
const QString AsidePattern = QStringLiteral("history.json.unreadable-*");

// Creates a folder and any missing parents, each new one private; tightens the folder itself.
bool makePrivateFolder(const QString& path)
{
    QStringList created;
    for (QString folder = QDir::cleanPath(QDir(path).absolutePath()); !QFileInfo::exists(folder);) {
        created << folder;
        const QString parent = QFileInfo(folder).absolutePath();
        if (parent == folder) break;
        folder = parent;
    }
    if (!QDir().mkpath(path)) return false;
    for (const QString& folder : created) QFile::setPermissions(folder, PrivateFolder);
    QFile::setPermissions(path, PrivateFolder);
    return true;
}

void tightenFiles(const QString& folder)
{
    const QDir dir(folder);
    for (const QFileInfo& file : dir.entryInfoList(QDir::Files | QDir::Hidden | QDir::System))
        if (file.permissions() & ForGroupOrOthers) QFile::setPermissions(file.filePath(), PrivateFile);
}
}  // namespace

QString ClipFolder::imagesPath() const { return QDir(path_).filePath(QStringLiteral("images")); }

QString ClipFolder::historyPath() const { return QDir(path_).filePath(QStringLiteral("history.json")); }

bool ClipFolder::makePrivate() const
{
    if (!makePrivateFolder(path_)) return false;
    tightenFiles(path_);
    if (QFileInfo::exists(imagesPath())) {
        QFile::setPermissions(imagesPath(), PrivateFolder);
        tightenFiles(imagesPath());
    }
    return true;
}

bool ClipFolder::writeImage(const QString& name, const QByteArray& png) const
{
    if (!makePrivateFolder(imagesPath())) return false;
    QSaveFile file(QDir(imagesPath()).filePath(name));
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.setPermissions(PrivateFile);
    return file.write(png) == png.size() && file.commit();
}

void ClipFolder::removeImage(const QString& name) const
{
    if (!name.isEmpty()) QFile::remove(QDir(imagesPath()).filePath(name));
}

QStringList ClipFolder::asideCopies() const
{
    QStringList paths;
    const QDir dir(path_);
    for (const QString& name : dir.entryList({AsidePattern}, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        paths << dir.filePath(name);
    return paths;
}

void ClipFolder::removeAsideCopies() const
{
    for (const QString& path : asideCopies()) QFile::remove(path);
}

bool ClipFolder::isImageName(QStringView name)
{
    constexpr qsizetype UuidLength = 36;
    if (name.size() != UuidLength + 4 || !name.endsWith(QLatin1String(".png"))) return false;
    for (QChar c : name.first(UuidLength)) {
        const char16_t u = c.unicode();
        const bool hex = (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
        if (!hex && u != '-') return false;
    }
    return true;
}

void ClipFolder::removeOrphanImages(const QSet<QString>& named, const QDateTime& before) const
{
    QSet<QString> kept = named;
    // A history kept aside may be broken JSON: its image names are found in its bytes.
    static const QRegularExpression imageName(QStringLiteral("[0-9A-Fa-f-]{36}\\.png"));
    for (const QString& path : asideCopies()) {
        QFile aside(path);
        if (!aside.open(QIODevice::ReadOnly)) return;
        const QString text = QString::fromLatin1(aside.readAll());
        for (auto match = imageName.globalMatch(text); match.hasNext();) kept.insert(match.next().captured());
    }
    const QDir images(imagesPath());
    for (const QFileInfo& file : images.entryInfoList(QDir::Files | QDir::Hidden | QDir::System))
        if (!kept.contains(file.fileName()) && file.lastModified() < before) QFile::remove(file.filePath());
}

}  // namespace orlo
