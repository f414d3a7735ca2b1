#include "platform/mac/MacScreens.h"
#import <AppKit/AppKit.h>

// No Core Foundation object is created here.
namespace orlo::mac {

struct MacScreens::Observer {
    id token = nil;
};

MacScreens::MacScreens(QObject* parent) : Screens(parent), observer_(std::make_unique<Observer>())
{
    observer_->token = [[NSNotificationCenter defaultCenter] addObserverForName:NSApplicationDidChangeScreenParametersNotification
                                                                          object:nil
                                                                           queue:[NSOperationQueue mainQueue]
                                                                      usingBlock:^(NSNotification*) {
                                                                        emit changed();
                                                                      }];
}

MacScreens::~MacScreens() { [[NSNotificationCenter defaultCenter] removeObserver:observer_->token]; }

QList<ScreenInfo> MacScreens::screens()
{
    // The first screen is the one with the menu bar.
    QList<ScreenInfo> out;
    for (NSScreen* screen in [NSScreen screens]) {
        NSNumber* number = screen.deviceDescription[@"NSScreenNumber"];
        const auto display = CGDirectDisplayID(number.unsignedIntValue);
        out << ScreenInfo{QRectF::fromCGRect(NSRectToCGRect(screen.frame)), QRectF::fromCGRect(NSRectToCGRect(screen.visibleFrame)),
                          display, CGDisplayIsBuiltin(display) != 0, QString::fromNSString(screen.localizedName)};
    }
    return out;
}

}  // namespace orlo::mac
