#include "platform/x11/KeyGrab.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include <algorithm>
#include <cstdlib>
#include <xcb/xinput.h>

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

quint64 KeyGrab::flagsAfter(quint16 state, quint32 keyCode, bool pressed) const
{
    const quint64 f = flags(state);
    const quint64 own = KeyCode::modifierFlag(keyCode);
    return pressed ? (f | own) : (f & ~own);
}

KeyGrab::~KeyGrab()
{
    // Orlo never leaves a grabbed key behind.
    while (!made_.empty()) ungrab(made_.back().combo);
}

std::vector<quint16> KeyGrab::variants(quint16 modifiers) const
{
    const quint16 numLock = x_.modifierMasks().numLock;
    std::vector<quint16> list;
    for (quint16 extra : {quint16(0), quint16(XCB_MOD_MASK_LOCK), numLock, quint16(XCB_MOD_MASK_LOCK | numLock)})
        if (std::find(list.begin(), list.end(), quint16(modifiers | extra)) == list.end()) list.push_back(modifiers | extra);
    return list;
}

bool KeyGrab::grab(const KeyCombo& combo, bool synchronous)
{
    const auto code = xKeyCode(combo.keyCode);
    if (!code) return false;
    ungrab(combo);
    std::vector<std::pair<Made, xcb_void_cookie_t>> requests;
    for (quint16 mods : variants(xModifiers(combo.modifiers)))
        requests.push_back({Made{combo, *code, mods, synchronous},
                            xcb_grab_key_checked(x_.connection(), 1, x_.root(), mods, *code, XCB_GRAB_MODE_ASYNC,
                                                 synchronous ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC)});
    bool refused = false;
    for (const auto& [made, cookie] : requests) {
        if (xcb_generic_error_t* error = xcb_request_check(x_.connection(), cookie)) {
            refused = true;
            free(error);
        } else {
            made_.push_back(made);
        }
    }
    if (refused) ungrab(combo);
    return !refused;
}

void KeyGrab::ungrab(const KeyCombo& combo)
{
    bool any = false;
    for (auto it = made_.begin(); it != made_.end();) {
        if (it->combo == combo) {
            xcb_ungrab_key(x_.connection(), it->keycode, x_.root(), it->modifiers);
            it = made_.erase(it);
            any = true;
        } else {
            ++it;
        }
    }
    if (any) x_.flush();
}

QList<KeyCombo> KeyGrab::regrabAll()
{
    QList<std::pair<KeyCombo, bool>> combos;
    for (const Made& m : made_)
        if (!combos.contains(std::pair{m.combo, m.synchronous})) combos << std::pair{m.combo, m.synchronous};
    QList<KeyCombo> refused;
    for (const auto& [combo, synchronous] : combos) {
        ungrab(combo);
        if (!grab(combo, synchronous)) refused << combo;
    }
    return refused;
}

bool KeyGrab::xinputReady()
{
    if (!xinput_) {
        xcb_connection_t* c = x_.connection();
        const xcb_query_extension_reply_t* ext = xcb_get_extension_data(c, &xcb_input_id);
        auto* version = ext && ext->present
            ? xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr) : nullptr;
        xinput_ = version && version->major_version >= 2;
        free(version);
    }
    return *xinput_;
}

bool KeyGrab::heldThroughXInput(const KeyCombo& combo)
{
    const auto code = xKeyCode(combo.keyCode);
    if (!code || !xinputReady()) return false;
    // Ask for the same grab for every device: the server answers with the modifier sets
    // another client already holds. What it grants is released at once.
    xcb_connection_t* c = x_.connection();
    const std::vector<quint16> wanted = variants(xModifiers(combo.modifiers));
    const std::vector<uint32_t> modifiers(wanted.begin(), wanted.end());
    const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    auto* reply = xcb_input_xi_passive_grab_device_reply(
        c, xcb_input_xi_passive_grab_device(c, XCB_CURRENT_TIME, x_.root(), XCB_NONE, *code, XCB_INPUT_DEVICE_ALL,
                                            uint16_t(modifiers.size()), 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                            XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                            XCB_INPUT_GRAB_OWNER_NO_OWNER, &mask, modifiers.data()),
        nullptr);
    if (!reply) return false;
    const int failed = xcb_input_xi_passive_grab_device_modifiers_length(reply);
    std::vector<uint32_t> granted;
    const xcb_input_grab_modifier_info_t* refusals = xcb_input_xi_passive_grab_device_modifiers(reply);
    for (uint32_t m : modifiers) {
        bool refused = false;
        for (int i = 0; i < failed; ++i) refused = refused || refusals[i].modifiers == m;
        if (!refused) granted.push_back(m);
    }
    free(reply);
    if (!granted.empty())
        xcb_input_xi_passive_ungrab_device(c, x_.root(), *code, XCB_INPUT_DEVICE_ALL, uint16_t(granted.size()),
                                           XCB_INPUT_GRAB_TYPE_KEYCODE, granted.data());
    x_.flush();
    return failed > 0;
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
