#pragma once
#include "platform/PowerAssertion.h"

namespace orlo::mac {

// A PreventUserIdleDisplaySleep assertion of IOKit's power management; the system drops it
// when Orlo ends. Its answer is at once, never refused later. macOS lets no application hold
// back the power key.
class MacPowerAssertion : public PowerAssertion {
public:
    std::optional<quint32> preventDisplaySleep(const QString& name) override;
    std::optional<quint32> preventPowerKeys(const QString&) override { return std::nullopt; }
    void release(quint32 assertion) override;
};

}  // namespace orlo::mac
