#pragma once
#include <QString>
#include <xkbcommon/xkbcommon.h>

namespace orlo {

// What a key types in an XKB keymap with the given modifiers held, in a layout group; empty
// when it types nothing printable (Return, Escape, Control with a letter).
QString xkbTypedText(xkb_keymap* keymap, xkb_keycode_t key, xkb_mod_mask_t modifiers, xkb_layout_index_t group);

}  // namespace orlo
