#include "platform/wayland/WaylandWorkspace.h"
#include <QCoreApplication>

namespace orlo::wayland {

qint64 WaylandWorkspace::ownPid() const { return QCoreApplication::applicationPid(); }

}  // namespace orlo::wayland
