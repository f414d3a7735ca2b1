#include "platform/x11/KeyGrab.h"
#include "platform/x11/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include <cstdlib>
#include <vector>

namespace orlo::x11 {

quint16 KeyGrab::xModifiers(quint64 f) const
{
    const ModifierMasks m = x_.modifierMasks();
    quint16 s = 0;
    if (f & ModifierFlag::Shift) s |= XCB_MOD_MASK_SHIFT;
    if (f & ModifierFlag::Control) s |= XCB_MOD_MASK_CONTROL;
    if (f & ModifierFlag::Option) s |= m.alt;
    if (f & ModifierFlag::Command) s |= m.super;
    return s;
}

quint64 KeyGrab::flags(quint16 state) const
{
    const ModifierMasks m = x_.modifierMasks();
    quint64 f = 0;
    if (state & XCB_MOD_MASK_SHIFT) f |= ModifierFlag::Shift;
    if (state & XCB_MOD_MASK_CONTROL) f |= ModifierFlag::Control;
    if (state & m.alt) f |= ModifierFlag::Option;
    if (state & m.super) f |= ModifierFlag::Command;
    if (state & XCB_MOD_MASK_LOCK) f |= ModifierFlag::CapsLock;
    return f;
}

static quint64 flagOfModifierKey(quint32 keyCode)
{
    switch (keyCode) {
    case KeyCode::Shift: case KeyCode::RightShift: return ModifierFlag::Shift;
    case KeyCode::Control: case KeyCode::RightControl: return ModifierFlag::Control;
    case KeyCode::Option: case KeyCode::RightOption: return ModifierFlag::Option;
    case KeyCode::Command: case KeyCode::RightCommand: return ModifierFlag::Command;
    default: return 0;
    }
}

quint64 KeyGrab::flagsAfter(quint16 state, quint32 keyCode, bool pressed) const
{
    const quint64 f = flags(state);
    const quint64 own = flagOfModifierKey(keyCode);
    return pressed ? (f | own) : (f & ~own);
}

bool KeyGrab::grab(const KeyCombo& combo, bool synchronous)
{
    const auto code = xKeyCode(combo.keyCode);
    if (!code) return false;
    const quint16 mods = xModifiers(combo.modifiers);
    const quint16 numLock = x_.modifierMasks().numLock;
    const quint16 variants[] = {0, XCB_MOD_MASK_LOCK, numLock, quint16(XCB_MOD_MASK_LOCK | numLock)};
    std::vector<xcb_void_cookie_t> cookies;
    for (quint16 extra : variants)
        cookies.push_back(xcb_grab_key_checked(x_.connection(), 1, x_.root(), mods | extra, *code,
                                               XCB_GRAB_MODE_ASYNC,
                                               synchronous ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC));
    bool refused = false;
    for (auto cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(x_.connection(), cookie)) {
            refused = true;
            free(error);
        }
    }
    if (refused) ungrab(combo);
    return !refused;
}

void KeyGrab::ungrab(const KeyCombo& combo)
{
    const auto code = xKeyCode(combo.keyCode);
    if (!code) return;
    const quint16 mods = xModifiers(combo.modifiers);
    const quint16 numLock = x_.modifierMasks().numLock;
    for (quint16 extra : {quint16(0), quint16(XCB_MOD_MASK_LOCK), numLock, quint16(XCB_MOD_MASK_LOCK | numLock)})
        xcb_ungrab_key(x_.connection(), *code, x_.root(), mods | extra);
    x_.flush();
}

bool KeyGrab::matches(const KeyCombo& combo, xcb_keycode_t keycode, quint16 state) const
{
    const auto code = xKeyCode(combo.keyCode);
    const quint16 locks = XCB_MOD_MASK_LOCK | x_.modifierMasks().numLock;
    const quint16 relevant = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_2
        | XCB_MOD_MASK_3 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;
    return code && *code == keycode && (state & relevant & ~locks) == xModifiers(combo.modifiers);
}

}  // namespace orlo::x11
