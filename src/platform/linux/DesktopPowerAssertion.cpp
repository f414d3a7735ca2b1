#include "platform/linux/DesktopPowerAssertion.h"

namespace orlo {

static const QString KeyLocks = QStringLiteral("handle-power-key:handle-suspend-key:handle-hibernate-key");

DesktopPowerAssertion::DesktopPowerAssertion(QObject* parent) : PowerAssertion(parent)
{
    connect(&screenSaver_, &ScreenSaverInhibitor::answered, this,
            [this](quint32 request, bool granted) { onAnswer(byScreenSaver_.take(request), granted); });
    connect(&logind_, &LogindInhibitor::answered, this,
            [this](quint32 request, bool granted) { onAnswer(byLogind_.take(request), granted); });
}

quint32 DesktopPowerAssertion::add(Held held)
{
    const quint32 id = next_++;
    if (held.screenSaver) byScreenSaver_.insert(*held.screenSaver, id);
    if (held.logind) byLogind_.insert(*held.logind, id);
    held_.insert(id, held);
    return id;
}

std::optional<quint32> DesktopPowerAssertion::preventDisplaySleep(const QString& name)
{
    Held held;
    held.suspendsSaver = (suspensions_ > 0 || suspendDisplaySaver(true));
    if (held.suspendsSaver) ++suspensions_;
    held.granted = held.suspendsSaver;
    held.screenSaver = screenSaver_.inhibit(name);
    held.logind = logind_.inhibit(QStringLiteral("idle"), name);
    held.waiting = 2;
    return add(held);
}

std::optional<quint32> DesktopPowerAssertion::preventPowerKeys(const QString& name)
{
    Held held;
    held.logind = logind_.inhibit(KeyLocks, name);
    held.waiting = 1;
    return add(held);
}

void DesktopPowerAssertion::onAnswer(quint32 assertion, bool granted)
{
    const auto it = held_.find(assertion);
    if (it == held_.end()) return;
    it->granted = it->granted || granted;
    if (--it->waiting == 0 && !it->granted) emit refused(assertion);
}

void DesktopPowerAssertion::release(quint32 assertion)
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
    if (it->suspendsSaver && --suspensions_ == 0) suspendDisplaySaver(false);
    held_.erase(it);
}

}  // namespace orlo
