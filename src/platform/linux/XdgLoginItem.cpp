#include "platform/linux/XdgLoginItem.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace orlo {

XdgLoginItem::XdgLoginItem(QString path, QString program) : path_(std::move(path)), program_(std::move(program)) {}

QString XdgLoginItem::defaultPath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("autostart/orlo.desktop"));
}

LoginItemStatus XdgLoginItem::status()
{
    QFile file(path_);
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
                              "Icon=orlo\n"
                              "Terminal=false\n"
                              "X-GNOME-Autostart-enabled=true\n")
                   .arg(exec)
                   .toUtf8());
    return file.commit();
}

bool XdgLoginItem::unregisterItem() { return !QFile::exists(path_) || QFile::remove(path_); }

}  // namespace orlo
