#include "system/SleepGuard.h"
#include "platform/PowerAssertion.h"
#include "system/SystemLog.h"
#include <utility>

namespace orlo {

SleepGuard::SleepGuard(PowerAssertion& power, QObject* parent) : QObject(parent), power_(power)
{
    connect(&power_, &PowerAssertion::refused, this, [this](quint32 assertion) {
        if (assertion_ != assertion) return;
        power_.release(*std::exchange(assertion_, std::nullopt));
        qCDebug(lcSystem, "prevent sleep refused");
        setOn(false);
    });
}

void SleepGuard::setOn(bool on)
{
    if (on == on_) return;
    on_ = on;
    emit isOnChanged(on);
    if (on) {
        assertion_ = power_.preventDisplaySleep(AssertionName);
        qCDebug(lcSystem, "prevent sleep %s", assertion_ ? "on" : "refused");
        if (!assertion_) setOn(false);
    } else if (assertion_) {
        power_.release(*assertion_);
        assertion_.reset();
        qCDebug(lcSystem, "prevent sleep off");
    }
}

}  // namespace orlo
