#pragma once
#include "platform/Keys.h"
#include <QtGlobal>
#include <Qt>
#include <optional>

class QKeyEvent;

namespace orlo {

// Canonical key codes to and from XKB key codes (Linux evdev code + 8), which both X11 and
// Wayland keyboards use.
std::optional<quint8> xKeyCode(quint32 canonical);
std::optional<quint32> canonicalKeyCode(quint8 xKeyCode);
// The canonical key code, modifier flags and text of a key event that Qt delivered to one of
// Orlo's windows; Qt gives the XKB key code and modifier state of the event on X11 and Wayland.
std::optional<KeyEvent> canonicalKeyEvent(const QKeyEvent& event);
// Qt's Shift, Control, Alt and Meta as modifier flags.
quint64 modifierFlags(Qt::KeyboardModifiers modifiers);

}  // namespace orlo
