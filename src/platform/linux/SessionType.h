#pragma once
#include <QtGlobal>

namespace orlo {

// The desktop session is a Wayland one, as the session tells its programs.
inline bool isWaylandSession()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
}

}  // namespace orlo
