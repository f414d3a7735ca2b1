#include "platform/mac/MacRecoveryMarks.h"
#import <Foundation/Foundation.h>

// No Core Foundation object is created here.
namespace orlo::mac::recovery {

namespace {
NSUserDefaults* marks()
{
    // A suite name must differ from the application's own bundle identifier.
    static NSUserDefaults* defaults = [[NSUserDefaults alloc] initWithSuiteName:@"app.orlo.Orlo.recovery"];
    return defaults;
}
}  // namespace

bool isMarked(const QString& change) { return [marks() boolForKey:change.toNSString()]; }

void mark(const QString& change, bool on)
{
    if (on)
        [marks() setBool:YES forKey:change.toNSString()];
    else
        [marks() removeObjectForKey:change.toNSString()];
    // Written out at once: the mark is for the case where Orlo does not end normally.
    [marks() synchronize];
}

}  // namespace orlo::mac::recovery
