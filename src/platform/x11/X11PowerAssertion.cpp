#include "platform/x11/X11PowerAssertion.h"
#include "platform/x11/XConnection.h"
#include <xcb/screensaver.h>
#include <cstdlib>

namespace orlo::x11 {

bool X11PowerAssertion::suspendScreenSaver(bool suspend)
{
    if (!x_.hasExtension("MIT-SCREEN-SAVER")) return false;
    xcb_generic_error_t* error = xcb_request_check(x_.connection(), xcb_screensaver_suspend_checked(x_.connection(), suspend ? 1 : 0));
    free(error);
    return !error;
}

std::optional<quint32> X11PowerAssertion::preventDisplaySleep(const QString& name)
{
    std::optional<quint32> cookie = inhibitor_.inhibit(name);
    if (!cookie) {
        if (suspensions_ == 0 && !suspendScreenSaver(true)) return std::nullopt;
        ++suspensions_;
    }
    const quint32 id = next_++;
    held_.insert(id, cookie);
    return id;
}

void X11PowerAssertion::release(quint32 assertion)
{
    const auto it = held_.constFind(assertion);
    if (it == held_.constEnd()) return;
    if (*it) inhibitor_.uninhibit(**it);
    else if (--suspensions_ == 0) suspendScreenSaver(false);
    held_.erase(it);
}

}  // namespace orlo::x11
