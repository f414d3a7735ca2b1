#pragma once
#include "platform/KeyboardLayout.h"
#include <QString>
#include <optional>

namespace orlo {

// How a desktop's configuration names the modifier keys of a shortcut.
struct ModifierNames {
    QString control, option, shift, command;
};

// A shortcut with Carbon-style modifiers as configurations and the desktop portal write it:
// the names of the modifiers held, control first, then the key's XKB keysym name ("Left",
// "Return", "a", "comma"), joined by "+". Nothing for a key without a keysym name.
std::optional<QString> xkbShortcutText(quint32 keyCode, quint32 carbonModifiers, KeyboardLayout& layout,
                                       const ModifierNames& names);

}  // namespace orlo
