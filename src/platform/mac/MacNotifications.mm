#include "platform/mac/MacNotifications.h"
#import <Foundation/Foundation.h>
#import <UserNotifications/UserNotifications.h>
#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>

// No Core Foundation object is created here.

// Hands the user's click on Orlo's notification back to the Qt object, on the main thread.
@interface OrloNotificationDelegate : NSObject <UNUserNotificationCenterDelegate>
@property(nonatomic, copy) void (^onClick)(void);
@end

@implementation OrloNotificationDelegate
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler
{
    if ([response.actionIdentifier isEqualToString:UNNotificationDefaultActionIdentifier] && self.onClick) {
        void (^click)(void) = self.onClick;
        dispatch_async(dispatch_get_main_queue(), click);
    }
    completionHandler();
}

// Shown also while Orlo is the active application (its settings window in front).
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completionHandler
{
    completionHandler(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}
@end

namespace orlo::mac {

namespace {
// One identifier for every notification: a new one replaces the last.
NSString* const Identifier = @"app.orlo.Orlo.notice";

bool isBundled() { return [NSBundle mainBundle].bundleIdentifier != nil; }
}  // namespace

struct MacNotifications::Delegate {
    OrloNotificationDelegate* object = nil;
};

MacNotifications::MacNotifications(QObject* parent) : Notifications(parent), delegate_(std::make_unique<Delegate>())
{
    // The notification centre throws when the process is not an application bundle.
    if (!isBundled()) return;
    delegate_->object = [[OrloNotificationDelegate alloc] init];
    QPointer<MacNotifications> guard(this);
    delegate_->object.onClick = ^{
      if (guard) emit guard->clicked();
    };
    [UNUserNotificationCenter currentNotificationCenter].delegate = delegate_->object;
}

MacNotifications::~MacNotifications()
{
    if (delegate_->object) [UNUserNotificationCenter currentNotificationCenter].delegate = nil;
}

void MacNotifications::show(const QString& title, const QString& body)
{
    QPointer<MacNotifications> guard(this);
    // Called on the framework's queue: the signal goes out on the application's thread.
    auto unavailable = [guard] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [guard] { if (guard) emit guard->unavailable(); }, Qt::QueuedConnection);
    };
    if (!isBundled()) {
        unavailable();
        return;
    }
    UNMutableNotificationContent* content = [[UNMutableNotificationContent alloc] init];
    content.title = title.toNSString();
    content.body = body.toNSString();
    UNNotificationRequest* request = [UNNotificationRequest requestWithIdentifier:Identifier content:content trigger:nil];
    UNUserNotificationCenter* center = [UNUserNotificationCenter currentNotificationCenter];
    // The first time, the system asks the user; the answer is kept and asked for no more.
    [center requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                          completionHandler:^(BOOL granted, NSError*) {
                            if (!granted) {
                                unavailable();
                                return;
                            }
                            [center addNotificationRequest:request
                                     withCompletionHandler:^(NSError* error) {
                                       if (error) unavailable();
                                     }];
                          }];
}

void MacNotifications::withdraw()
{
    if (!isBundled()) return;
    UNUserNotificationCenter* center = [UNUserNotificationCenter currentNotificationCenter];
    [center removeDeliveredNotificationsWithIdentifiers:@[Identifier]];
    [center removePendingNotificationRequestsWithIdentifiers:@[Identifier]];
}

}  // namespace orlo::mac
