#pragma once
#include "platform/KeyboardLayout.h"
#include <optional>

namespace orlo {

// A key with Carbon-style modifiers (command 0x100, shift 0x200, option 0x800, control
// 0x1000) as Qt combines key and modifiers into one number, which KDE's global shortcuts
// store: the key the layout puts on that key code, so a shortcut means the same key the user
// pressed to record it. Nothing for a key that has no Qt name.
std::optional<int> qtKeyCombination(quint32 keyCode, quint32 carbonModifiers, KeyboardLayout& layout);

}  // namespace orlo
