#include "platform/Platform.h"
#include "platform/linux/SessionType.h"
#include "platform/wayland/WaylandPlatform.h"
#include "platform/x11/X11Platform.h"
#include <cstdio>

// Linux desktops: a Wayland session gets the Wayland backend, an X11 session the X11 one.
// Asking for Qt's X11 platform (QT_QPA_PLATFORM=xcb) in a Wayland session chooses XWayland
// instead, as does a compositor that cannot be reached while an X display can.

namespace orlo {

namespace {
enum class Backend { X11, Wayland };
Backend chosen = Backend::X11;

bool wantsXWayland() { return qgetenv("QT_QPA_PLATFORM").startsWith("xcb"); }
}  // namespace

QString prepareSystemDisplay()
{
    chosen = Backend::X11;
    if (!isWaylandSession() || wantsXWayland()) return x11::prepareDisplay();
    const QString problem = wayland::prepareDisplay();
    if (problem.isEmpty()) {
        chosen = Backend::Wayland;
        return {};
    }
    if (!qEnvironmentVariableIsEmpty("DISPLAY") && x11::prepareDisplay().isEmpty()) {
        fprintf(stderr, "Orlo: %s Using XWayland instead.\n", qPrintable(problem));
        return {};
    }
    return problem;
}

std::unique_ptr<Platform> createSystemPlatform(QString* error)
{
    return chosen == Backend::Wayland ? wayland::createPlatform(error) : x11::createPlatform(error);
}

}  // namespace orlo
