#pragma once
#include "platform/Accessibility.h"

namespace orlo::mac {

// The Accessibility permission of Privacy & Security: AXIsProcessTrusted and its prompt.
class MacAccessibility : public Accessibility {
public:
    bool isTrusted() override;
    bool requestTrust() override;
    void openSettings() override;
};

}  // namespace orlo::mac
