#include "platform/x11/X11PowerAssertion.h"
#include "platform/x11/XConnection.h"
#include <xcb/screensaver.h>
#include <cstdlib>

namespace orlo::x11 {

bool X11PowerAssertion::suspendDisplaySaver(bool suspend)
{
    if (!x_.hasExtension("MIT-SCREEN-SAVER")) return false;
    xcb_generic_error_t* error = xcb_request_check(x_.connection(), xcb_screensaver_suspend_checked(x_.connection(), suspend ? 1 : 0));
    free(error);
    return !error;
}

}  // namespace orlo::x11
