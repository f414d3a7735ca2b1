#include "platform/x11/X11PowerAssertion.h"
#include "platform/x11/XConnection.h"
#include <xcb/screensaver.h>
#include <cstdlib>

namespace orlo::x11 {

static const QString KeyLocks = QStringLiteral("handle-power-key:handle-suspend-key:handle-hibernate-key");

X11PowerAssertion::X11PowerAssertion(XConnection& x, QObject* parent) : PowerAssertion(parent), x_(x)
{
    connect(&screenSaver_, &ScreenSaverInhibitor::answered, this,
            [this](quint32 request, bool granted) { onAnswer(byScreenSaver_.take(request), granted); });
    connect(&logind_, &LogindInhibitor::answered, this,
            [this](quint32 request, bool granted) { onAnswer(byLogind_.take(request), granted); });
}

// Suspending also holds back the X server's power saving (DPMS), and the server resumes both
// when the connection that suspended them closes.
bool X11PowerAssertion::suspendScreenSaver(bool suspend)
{
    if (!x_.hasExtension("MIT-SCREEN-SAVER")) return false;
    xcb_generic_error_t* error = xcb_request_check(x_.connection(), xcb_screensaver_suspend_checked(x_.connection(), suspend ? 1 : 0));
    free(error);
    return !error;
}

quint32 X11PowerAssertion::add(Held held)
{
    const quint32 id = next_++;
    if (held.screenSaver) byScreenSaver_.insert(*held.screenSaver, id);
    if (held.logind) byLogind_.insert(*held.logind, id);
    held_.insert(id, held);
    return id;
}

std::optional<quint32> X11PowerAssertion::preventDisplaySleep(const QString& name)
{
    Held held;
    held.suspendsX = (suspensions_ > 0 || suspendScreenSaver(true));
    if (held.suspendsX) ++suspensions_;
    held.granted = held.suspendsX;
    held.screenSaver = screenSaver_.inhibit(name);
    held.logind = logind_.inhibit(QStringLiteral("idle"), name);
    held.waiting = 2;
    return add(held);
}

std::optional<quint32> X11PowerAssertion::preventPowerKeys(const QString& name)
{
    Held held;
    held.logind = logind_.inhibit(KeyLocks, name);
    held.waiting = 1;
    return add(held);
}

void X11PowerAssertion::onAnswer(quint32 assertion, bool granted)
{
    const auto it = held_.find(assertion);
    if (it == held_.end()) return;
    it->granted = it->granted || granted;
    if (--it->waiting == 0 && !it->granted) emit refused(assertion);
}

void X11PowerAssertion::release(quint32 assertion)
{
    const auto it = held_.constFind(assertion);
    if (it == held_.constEnd()) return;
    if (it->screenSaver) {
        screenSaver_.release(*it->screenSaver);
        byScreenSaver_.remove(*it->screenSaver);
    }
    if (it->logind) {
        logind_.release(*it->logind);
        byLogind_.remove(*it->logind);
    }
    if (it->suspendsX && --suspensions_ == 0) suspendScreenSaver(false);
    held_.erase(it);
}

}  // namespace orlo::x11
