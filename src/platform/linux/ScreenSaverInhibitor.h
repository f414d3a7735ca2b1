#pragma once
#include <QString>
#include <optional>

namespace orlo {

// The session's screen saver service (org.freedesktop.ScreenSaver) over D-Bus: while an
// inhibition is held the desktop neither blanks nor locks the screen for idleness. The
// service drops Orlo's inhibitions when Orlo's bus connection closes.
class ScreenSaverInhibitor {
public:
    // Nothing when there is no session bus or no such service.
    std::optional<quint32> inhibit(const QString& reason);
    void uninhibit(quint32 cookie);
};

}  // namespace orlo
