#pragma once
#include "platform/Accessibility.h"

namespace orlo::wayland {

// A Wayland compositor has no permission for the user to grant: it offers Orlo protocols or
// it does not, and each module says what it cannot do without them (Platform::moduleLimits).
class WaylandAccessibility : public Accessibility {
public:
    bool isTrusted() override { return true; }
    bool requestTrust() override { return true; }
    void openSettings() override {}
};

}  // namespace orlo::wayland
