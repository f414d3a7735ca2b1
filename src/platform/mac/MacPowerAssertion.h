#pragma once
#include "platform/PowerAssertion.h"

namespace orlo::mac {

// A PreventUserIdleDisplaySleep assertion of IOKit's power management; the system drops it
// when Orlo ends.
class MacPowerAssertion : public PowerAssertion {
public:
    std::optional<quint32> preventDisplaySleep(const QString& name) override;
    void release(quint32 assertion) override;
};

}  // namespace orlo::mac
