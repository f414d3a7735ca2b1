#include "platform/linux/ThemeIcon.h"
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace orlo {

QIcon themeIcon(const QString& name)
{
    if (name.isEmpty()) return {};
    if (QDir::isAbsolutePath(name)) return QIcon(name);
    QIcon icon = QIcon::fromTheme(name);
    if (!icon.isNull()) return icon;
    // Without a desktop environment Qt may know no icon theme: look where packages put icons.
    for (const QString& dir : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        for (const char* size : {"scalable", "256x256", "128x128", "64x64", "48x48", "32x32"}) {
            for (const char* ext : {".svg", ".png"}) {
                const QString path = QStringLiteral("%1/icons/hicolor/%2/apps/%3%4").arg(dir, QLatin1String(size), name, QLatin1String(ext));
                if (QFileInfo::exists(path)) return QIcon(path);
            }
        }
        for (const char* ext : {".png", ".svg", ".xpm"}) {
            const QString path = QStringLiteral("%1/pixmaps/%2%3").arg(dir, name, QLatin1String(ext));
            if (QFileInfo::exists(path)) return QIcon(path);
        }
    }
    return {};
}

}  // namespace orlo
