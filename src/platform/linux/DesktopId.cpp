#include "platform/linux/DesktopId.h"
#include <QGuiApplication>

namespace orlo {

QString desktopId()
{
    QString id = QGuiApplication::desktopFileName();
    if (id.endsWith(QLatin1String(".desktop"))) id.chop(8);
    return id.isEmpty() ? QStringLiteral("orlo") : id;
}

}  // namespace orlo
