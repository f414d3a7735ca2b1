#include "platform/mac/MacSystemSwitcher.h"
#include "platform/mac/MacRecoveryMarks.h"
#include <cstdint>
#include <dlfcn.h>

// No Core Foundation object is created here.
namespace orlo::mac {

namespace {
const QString TakenMark = QStringLiteral("systemSwitcherOff");

// PRIVATE API, the only way there is: no documented call switches the system's own switcher
// keys off. The window server's CGSSetSymbolicHotKeyEnabled is looked up by name at run time,
// so that a system without it leaves the switcher alone instead of failing to start Orlo.
// Symbolic hot keys 1 and 2 are Command-Tab and Command-Shift-Tab.
bool setSymbolicSwitcherKeysEnabled(bool enabled)
{
    using SetSymbolicHotKeyEnabled = int32_t (*)(int32_t hotKey, bool enabled);
    static const auto set = reinterpret_cast<SetSymbolicHotKeyEnabled>(dlsym(RTLD_DEFAULT, "CGSSetSymbolicHotKeyEnabled"));
    if (!set) return false;
    const bool forward = set(1, enabled) == 0;
    const bool backward = set(2, enabled) == 0;
    return forward && backward;
}
}  // namespace

MacSystemSwitcher::MacSystemSwitcher()
{
    if (recovery::isMarked(TakenMark)) setEnabled(true);
}

bool MacSystemSwitcher::setEnabled(bool enabled)
{
    // Marked before the keys are taken, so that no crash between the two can lose them.
    if (!enabled) recovery::mark(TakenMark, true);
    const bool done = setSymbolicSwitcherKeysEnabled(enabled);
    if (enabled ? done : !done) recovery::mark(TakenMark, false);
    return done;
}

}  // namespace orlo::mac
