#include "platform/x11/X11EdgeTiling.h"
#include "platform/linux/GSettingsFlag.h"
#include "platform/x11/WindowManagerName.h"
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QXmlStreamReader>

namespace orlo::x11 {

namespace {
// KWin's screen edges: a window dropped on the top edge is maximized, on a side edge tiled.
bool kwinTiles()
{
    const QString path = QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("kwinrc"));
    if (path.isEmpty()) return true;
    QSettings rc(path, QSettings::IniFormat);
    return rc.value(QStringLiteral("Windows/ElectricBorderMaximize"), true).toBool()
        || rc.value(QStringLiteral("Windows/ElectricBorderTiling"), true).toBool();
}

// xfwm4 keeps its settings in xfconf, whose daemon writes them to one file per channel.
bool xfwmTiles()
{
    const QString path = QStandardPaths::locate(QStandardPaths::GenericConfigLocation,
                                                QStringLiteral("xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml"));
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) return true;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement
            && xml.attributes().value(QStringLiteral("name")) == QLatin1String("tile_on_move"))
            return xml.attributes().value(QStringLiteral("value")) != QLatin1String("false");
    }
    return true;
}
}  // namespace

QString X11EdgeTiling::switchOffPlace()
{
    const QString wm = QString::fromUtf8(windowManagerName(x_)).toLower();
    if (wm.contains(QLatin1String("mutter")) || wm.contains(QLatin1String("gnome shell"))) {
        if (gsettingsFlag("org.gnome.mutter", "edge-tiling").value_or(false))
            return QStringLiteral("GNOME Tweaks › Windows › Edge Tiling (or run: gsettings set org.gnome.mutter edge-tiling false)");
    } else if (wm.contains(QLatin1String("metacity"))) {
        if (gsettingsFlag("org.gnome.metacity", "edge-tiling").value_or(false))
            return QStringLiteral("run: gsettings set org.gnome.metacity edge-tiling false");
    } else if (wm.contains(QLatin1String("kwin"))) {
        if (kwinTiles())
            return QStringLiteral("System Settings › Workspace Behavior › Screen Edges › Maximize and Tile");
    } else if (wm.contains(QLatin1String("xfwm"))) {
        if (xfwmTiles())
            return QStringLiteral("Window Manager Tweaks › Accessibility › Automatically tile windows when moving toward "
                                  "the screen edge");
    }
    return {};
}

}  // namespace orlo::x11
