#pragma once
#include "platform/SystemSwitcher.h"

namespace orlo::mac {

// The Dock's Command-Tab and Command-Shift-Tab, switched off while Orlo's switcher uses
// Command-Tab. A start after a crash gives them back when Orlo had taken them.
class MacSystemSwitcher : public SystemSwitcher {
public:
    MacSystemSwitcher();
    bool setEnabled(bool enabled) override;
};

}  // namespace orlo::mac
