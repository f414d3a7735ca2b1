#include "platform/mac/MacEdgeTiling.h"
#import <Foundation/Foundation.h>
#include <QCoreApplication>

// No Core Foundation object is created here.
namespace orlo::mac {

QString MacEdgeTiling::switchOffPlace()
{
    const NSOperatingSystemVersion sequoia{15, 0, 0};
    if (![[NSProcessInfo processInfo] isOperatingSystemAtLeastVersion:sequoia]) return {};
    return QCoreApplication::translate("orlo::mac::MacEdgeTiling",
                                       "System Settings › Desktop & Dock › Windows, \"Drag windows to screen edges to tile\"");
}

}  // namespace orlo::mac
