#pragma once
#include "platform/SystemSwitcher.h"

namespace orlo {

// X11 window managers keep their switching keys in their own configuration, out of a client's
// reach: when they hold the switcher's keys, the switcher's settings say so instead.
class NoSystemSwitcher : public SystemSwitcher {
public:
    bool setEnabled(bool) override { return false; }
};

}  // namespace orlo
