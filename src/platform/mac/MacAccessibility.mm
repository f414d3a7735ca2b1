#include "platform/mac/MacAccessibility.h"
#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

// No Core Foundation object is created here; the options dictionary is an Objective-C object
// lent to the call with __bridge.
namespace orlo::mac {

bool MacAccessibility::isTrusted() { return AXIsProcessTrusted(); }

bool MacAccessibility::requestTrust()
{
    NSDictionary* options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt: @YES};
    return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

void MacAccessibility::openSettings()
{
    NSURL* url = [NSURL URLWithString:@"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"];
    if (url) [[NSWorkspace sharedWorkspace] openURL:url];
}

}  // namespace orlo::mac
