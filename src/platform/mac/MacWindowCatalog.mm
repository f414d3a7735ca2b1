#include "platform/mac/MacWindowCatalog.h"
#include "platform/mac/MacWindowHandles.h"
#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>
#include <dlfcn.h>

// Core Foundation ownership: the window list from CGWindowListCopyWindowInfo crosses to
// Objective-C with CFBridgingRelease; elements are held in CFRefs (MacAXElement.h).
namespace orlo::mac {

namespace {

// PRIVATE API, the only way there is: no documented call tells which window-server window an
// Accessibility window is, and the switcher needs it to pair the two lists exactly. Looked up
// by name at run time; without it the lists are paired by frame alone.
std::optional<quint32> windowNumberOf(AXUIElementRef window)
{
    using GetWindow = AXError (*)(AXUIElementRef, CGWindowID*);
    static const auto get = reinterpret_cast<GetWindow>(dlsym(RTLD_DEFAULT, "_AXUIElementGetWindow"));
    CGWindowID number = 0;
    if (!get || get(window, &number) != kAXErrorSuccess || number == 0) return std::nullopt;
    return quint32(number);
}

bool isListed(const std::optional<QString>& subrole)
{
    return !subrole || *subrole == QLatin1String("AXStandardWindow") || *subrole == QLatin1String("AXDialog");
}

}  // namespace

MacWindowCatalog::MacWindowCatalog(MacWindowHandles& handles) : handles_(handles) {}

QList<RunningApp> MacWindowCatalog::runningApplications()
{
    QList<RunningApp> apps;
    for (NSRunningApplication* app in [NSWorkspace sharedWorkspace].runningApplications)
        apps << RunningApp{app.processIdentifier, QString::fromNSString(app.bundleIdentifier ?: @""),
                           QString::fromNSString(app.localizedName ?: @""),
                           app.activationPolicy == NSApplicationActivationPolicyRegular};
    return apps;
}

QList<ScreenWindow> MacWindowCatalog::onScreenWindows()
{
    NSArray* list = CFBridgingRelease(
        CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
    QList<ScreenWindow> out;
    for (NSDictionary* entry in list) {
        NSNumber* layer = entry[(__bridge NSString*)kCGWindowLayer];
        NSNumber* owner = entry[(__bridge NSString*)kCGWindowOwnerPID];
        NSNumber* number = entry[(__bridge NSString*)kCGWindowNumber];
        NSDictionary* bounds = entry[(__bridge NSString*)kCGWindowBounds];
        if (![layer isKindOfClass:[NSNumber class]] || ![owner isKindOfClass:[NSNumber class]] ||
            ![number isKindOfClass:[NSNumber class]] || ![bounds isKindOfClass:[NSDictionary class]])
            continue;
        CGRect rect;
        if (!CGRectMakeWithDictionaryRepresentation((__bridge CFDictionaryRef)bounds, &rect)) continue;
        ScreenWindow window;
        window.number = number.unsignedIntValue;
        window.pid = owner.intValue;
        window.layer = layer.intValue;
        window.bounds = QRectF::fromCGRect(rect);
        if (NSNumber* alpha = entry[(__bridge NSString*)kCGWindowAlpha]; [alpha isKindOfClass:[NSNumber class]])
            window.alpha = alpha.doubleValue;
        // Window names come only with the Screen Recording permission; without it they are absent.
        if (NSString* name = entry[(__bridge NSString*)kCGWindowName]; [name isKindOfClass:[NSString class]])
            window.name = QString::fromNSString(name);
        out << window;
    }
    return out;
}

std::optional<QList<AppWindow>> MacWindowCatalog::applicationWindows(const RunningApp& running)
{
    const ax::Element app = ax::application(pid_t(running.pid), ax::ListingTimeout);
    const auto elements = app ? ax::elements(app.get(), kAXWindowsAttribute) : std::nullopt;
    if (!elements) return std::nullopt;
    QList<AppWindow> out;
    for (const ax::Element& element : *elements) {
        AppWindow window;
        window.element = handles_.idFor(element.get());
        window.number = windowNumberOf(element.get());
        window.title = ax::string(element.get(), kAXTitleAttribute).value_or(QString());
        window.frame = ax::frame(element.get()).value_or(QRectF());
        window.minimized = ax::boolean(element.get(), kAXMinimizedAttribute).value_or(false);
        window.standard = isListed(ax::string(element.get(), kAXSubroleAttribute));
        out << window;
    }
    return out;
}

void MacWindowCatalog::raise(WindowId id, bool unminimize)
{
    AXUIElementRef window = handles_.element(id);
    const auto pid = window ? ax::pidOf(window) : std::nullopt;
    if (!pid) return;
    if (unminimize) ax::setBoolean(window, kAXMinimizedAttribute, false);
    activate(*pid);
    if (const ax::Element app = ax::application(*pid, ax::ActivationTimeout)) ax::setBoolean(app.get(), kAXFrontmostAttribute, true);
    ax::setBoolean(window, kAXMainAttribute, true);
    AXUIElementPerformAction(window, kAXRaiseAction);
}

void MacWindowCatalog::activate(qint64 pid)
{
    [[NSRunningApplication runningApplicationWithProcessIdentifier:pid_t(pid)] activateWithOptions:0];
}

}  // namespace orlo::mac
