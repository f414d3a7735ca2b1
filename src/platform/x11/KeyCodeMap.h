#pragma once
#include <QtGlobal>
#include <optional>

namespace orlo::x11 {

// Canonical key codes to and from X key codes (Linux evdev code + 8).
std::optional<quint8> xKeyCode(quint32 canonical);
std::optional<quint32> canonicalKeyCode(quint8 xKeyCode);

}  // namespace orlo::x11
