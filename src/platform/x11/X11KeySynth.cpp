#include "platform/x11/X11KeySynth.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include "platform/Keys.h"
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace orlo::x11 {

namespace {
constexpr xcb_keysym_t KeysymV = 0x0076;
constexpr xcb_keysym_t KeysymControlL = 0xffe3;
}  // namespace

X11KeySynth::X11KeySynth(XConnection& x) : x_(x), xtest_(x.hasExtension("XTEST")) {}

bool X11KeySynth::postPaste()
{
    if (!xtest_) return false;
    xcb_connection_t* c = x_.connection();

    // The key that types "v" in the current layout, so that Control-V means paste also on
    // layouts that move the letter; the key at the V position otherwise.
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(c);
    xcb_keycode_t v = 0, control = 0;
    if (symbols) {
        if (xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, KeysymV)) {
            v = codes[0];
            free(codes);
        }
        if (xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, KeysymControlL)) {
            control = codes[0];
            free(codes);
        }
        xcb_key_symbols_free(symbols);
    }
    if (!v) v = xKeyCode(KeyCode::V).value_or(0);
    if (!control) control = xKeyCode(KeyCode::Control).value_or(0);
    if (!v || !control) return false;

    // Modifiers still held (Shift of Shift-Return, say) would turn Control-V into another
    // shortcut: let go of them first, as the user is about to anyway.
    if (auto* mapping = xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr)) {
        if (auto* keys = xcb_query_keymap_reply(c, xcb_query_keymap(c), nullptr)) {
            const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(mapping);
            const int count = xcb_get_modifier_mapping_keycodes_length(mapping);
            for (int i = 0; i < count; ++i) {
                const xcb_keycode_t code = codes[i];
                if (code && (keys->keys[code / 8] & (1 << (code % 8))))
                    xcb_test_fake_input(c, XCB_KEY_RELEASE, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            }
            free(keys);
        }
        free(mapping);
    }
    xcb_test_fake_input(c, XCB_KEY_PRESS, control, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_PRESS, v, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_RELEASE, v, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_RELEASE, control, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    x_.flush();
    return true;
}

}  // namespace orlo::x11
