#include "platform/mac/MacScripting.h"
#import <Foundation/Foundation.h>

// No Core Foundation object is created here.
namespace orlo::mac {

Scripting::Result MacScripting::run(const QString& source)
{
    // Called on a worker thread (the browser tabs): NSAppleScript's reference names no thread
    // restriction, and each run uses an instance of its own. The pool drains what the run
    // autoreleased, since a worker thread has no pool of its own.
    @autoreleasepool {
        NSAppleScript* script = [[NSAppleScript alloc] initWithSource:source.toNSString()];
        if (!script) return Failure{-1};
        NSDictionary<NSString*, id>* error = nil;
        NSAppleEventDescriptor* result = [script executeAndReturnError:&error];
        if (!result) {
            NSNumber* number = [error[NSAppleScriptErrorNumber] isKindOfClass:[NSNumber class]] ? error[NSAppleScriptErrorNumber] : nil;
            return Failure{number ? number.intValue : -1};
        }
        return QString::fromNSString(result.stringValue ?: @"");
    }
}

}  // namespace orlo::mac
