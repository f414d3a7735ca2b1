#include "platform/linux/SandboxedApp.h"
#include <QRegularExpression>

namespace orlo {

QString sandboxedAppId(const QByteArray& cgroupFile)
{
    static const QRegularExpression flatpak(QStringLiteral("^app-flatpak-([A-Za-z0-9_.-]+)-\\d+\\.scope$"));
    static const QRegularExpression snap(
        QStringLiteral("^snap\\.([a-z0-9-]+)\\.([A-Za-z0-9-]+)-[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}\\.scope$"));
    // Lines are "<hierarchy>:<controllers>:<path>"; the unit is the path's last part.
    for (const QByteArray& line : cgroupFile.split('\n')) {
        const QString unit = QString::fromUtf8(line.mid(line.lastIndexOf('/') + 1));
        if (const auto m = flatpak.match(unit); m.hasMatch()) return m.captured(1);
        if (const auto m = snap.match(unit); m.hasMatch()) return m.captured(1) + '_' + m.captured(2);
    }
    return {};
}

}  // namespace orlo
