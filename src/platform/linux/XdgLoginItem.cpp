#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/DesktopId.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace orlo {

namespace {
// The autostart entry's name before Orlo had a desktop id of its own.
const QString legacyName = QStringLiteral("orlo.desktop");
}  // namespace

XdgLoginItem::XdgLoginItem(QString path, QString program) : path_(std::move(path)), program_(std::move(program)) {}

QString XdgLoginItem::defaultPath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("autostart/%1.desktop").arg(desktopId()));
}

QString XdgLoginItem::legacyPath() const
{
    const QFileInfo entry(path_);
    return entry.fileName() == legacyName ? QString() : entry.dir().filePath(legacyName);
}

LoginItemStatus XdgLoginItem::status()
{
    // An entry an earlier Orlo wrote under the old name still starts Orlo at login.
    QFile file(path_);
    if (!file.exists() && !legacyPath().isEmpty()) file.setFileName(legacyPath());
    if (!file.open(QIODevice::ReadOnly)) return LoginItemStatus::NotRegistered;
    const QByteArray text = file.readAll();
    if (text.contains("\nHidden=true") || text.contains("X-GNOME-Autostart-enabled=false"))
        return LoginItemStatus::NotRegistered;
    return LoginItemStatus::Enabled;
}

bool XdgLoginItem::registerItem()
{
    if (!QDir().mkpath(QFileInfo(path_).absolutePath())) return false;
    QString exec = program_;
    exec.replace('\\', QLatin1String("\\\\")).replace('"', QLatin1String("\\\""));
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(QStringLiteral("[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=Orlo\n"
                              "Comment=Window switcher, window snapping, clipboard history and system tools\n"
                              "Exec=\"%1\"\n"
                              "Icon=%2\n"
                              "Terminal=false\n"
                              "X-GNOME-Autostart-enabled=true\n")
                   .arg(exec, desktopId())
                   .toUtf8());
    return file.commit() && removeLegacyEntry();
}

bool XdgLoginItem::unregisterItem() { return (!QFile::exists(path_) || QFile::remove(path_)) && removeLegacyEntry(); }

bool XdgLoginItem::removeLegacyEntry()
{
    const QString legacy = legacyPath();
    return legacy.isEmpty() || !QFile::exists(legacy) || QFile::remove(legacy);
}

}  // namespace orlo
