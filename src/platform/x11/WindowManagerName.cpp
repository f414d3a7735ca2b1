#include "platform/x11/WindowManagerName.h"
#include "platform/x11/XConnection.h"

namespace orlo::x11 {

QByteArray windowManagerName(XConnection& x)
{
    xcb_ewmh_connection_t* e = x.ewmh();
    xcb_window_t check = XCB_NONE;
    if (!xcb_ewmh_get_supporting_wm_check_reply(e, xcb_ewmh_get_supporting_wm_check(e, x.root()), &check, nullptr))
        return {};
    xcb_ewmh_get_utf8_strings_reply_t name;
    if (!xcb_ewmh_get_wm_name_reply(e, xcb_ewmh_get_wm_name(e, check), &name, nullptr)) return {};
    QByteArray result(name.strings, int(name.strings_len));
    xcb_ewmh_get_utf8_strings_reply_wipe(&name);
    return result;
}

}  // namespace orlo::x11
