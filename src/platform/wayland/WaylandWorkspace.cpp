#include "platform/wayland/WaylandWorkspace.h"
#include "platform/linux/ThemeIcon.h"
#include <QCoreApplication>

namespace orlo::wayland {

qint64 WaylandWorkspace::ownPid() const { return QCoreApplication::applicationPid(); }

QIcon WaylandWorkspace::applicationIcon(const QString& bundleId)
{
    const auto* entry = bundleId.isEmpty() ? nullptr : entries_.byId(bundleId);
    return entry && !entry->icon.isEmpty() ? themeIcon(entry->icon) : QIcon();
}

}  // namespace orlo::wayland
