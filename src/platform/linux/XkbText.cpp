#include "platform/linux/XkbText.h"
#include <QList>

namespace orlo {

QString xkbTypedText(xkb_keymap* keymap, xkb_keycode_t key, xkb_mod_mask_t modifiers, xkb_layout_index_t group)
{
    xkb_state* state = keymap ? xkb_state_new(keymap) : nullptr;
    if (!state) return {};
    xkb_state_update_mask(state, modifiers, 0, 0, 0, 0, group);
    char utf8[64] = {};
    const int length = xkb_state_key_get_utf8(state, key, utf8, sizeof utf8);
    xkb_state_unref(state);
    if (length < 1 || length >= int(sizeof utf8)) return {};
    const QString text = QString::fromUtf8(utf8, length);
    for (const char32_t c : text.toUcs4())
        if (!QChar::isPrint(c)) return {};
    return text;
}

}  // namespace orlo
