#include "platform/mac/MacPowerAssertion.h"
#include "platform/mac/MacCF.h"
#import <IOKit/pwr_mgt/IOPMLib.h>

// Core Foundation ownership: the name that QString::toCFString creates is held in a CFRef.
namespace orlo::mac {

std::optional<quint32> MacPowerAssertion::preventDisplaySleep(const QString& name)
{
    IOPMAssertionID id = kIOPMNullAssertionID;
    const CFRef<CFStringRef> cfName(name.toCFString());
    const IOReturn status = IOPMAssertionCreateWithName(kIOPMAssertPreventUserIdleDisplaySleep, kIOPMAssertionLevelOn, cfName.get(), &id);
    if (status != kIOReturnSuccess) return std::nullopt;
    return quint32(id);
}

void MacPowerAssertion::release(quint32 assertion) { IOPMAssertionRelease(IOPMAssertionID(assertion)); }

}  // namespace orlo::mac
