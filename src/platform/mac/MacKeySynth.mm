#include "platform/mac/MacKeySynth.h"
#include "platform/Keys.h"
#include "platform/mac/MacCF.h"
#import <ApplicationServices/ApplicationServices.h>

// Core Foundation ownership: the event source and both events come from Create functions
// and are held in CFRefs.
namespace orlo::mac {

bool MacKeySynth::postPaste()
{
    const CFRef<CGEventSourceRef> source(CGEventSourceCreate(kCGEventSourceStateCombinedSessionState));
    const CFRef<CGEventRef> down(CGEventCreateKeyboardEvent(source.get(), CGKeyCode(KeyCode::V), true));
    const CFRef<CGEventRef> up(CGEventCreateKeyboardEvent(source.get(), CGKeyCode(KeyCode::V), false));
    if (!down || !up) return false;
    // Command alone, whatever modifiers the user still holds.
    CGEventSetFlags(down.get(), kCGEventFlagMaskCommand);
    CGEventSetFlags(up.get(), kCGEventFlagMaskCommand);
    CGEventPost(kCGHIDEventTap, down.get());
    CGEventPost(kCGHIDEventTap, up.get());
    return true;
}

}  // namespace orlo::mac
