#pragma once
#include <QString>

namespace orlo {

// The system's own window-switching keys (Command-Tab and Command-Shift-Tab on macOS), which
// would open the system's switcher beside Orlo's when Orlo's switcher uses the same keys.
class SystemSwitcher {
public:
    virtual ~SystemSwitcher() = default;
    // Switches the system's switcher keys off (false) or back on (true); false when the system
    // offers no way to, and nothing changed.
    virtual bool setEnabled(bool enabled) = 0;
    // Where the user frees those keys where Orlo may not, in the words of the desktop's own
    // settings; empty where the desktop is not known.
    virtual QString switchOffPlace() const { return {}; }
};

}  // namespace orlo
