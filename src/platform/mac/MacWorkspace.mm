#include "platform/mac/MacWorkspace.h"
#include "platform/mac/MacAXElement.h"
#include "platform/mac/MacImages.h"
#import <AppKit/AppKit.h>
#include <QPixmap>
#include <unistd.h>

// Core Foundation ownership: Accessibility elements are held in CFRefs (MacAXElement.h);
// everything else here is Objective-C, under automatic reference counting.
namespace orlo::mac {

namespace {

AppInfo infoOf(NSRunningApplication* app)
{
    AppInfo info{app.processIdentifier, QString::fromNSString(app.bundleIdentifier ?: @""),
                 QString::fromNSString(app.localizedName ?: @""), {}};
    if (NSString* path = app.bundleURL.path) {
        info.bundlePaths << QString::fromNSString(path);
        if (NSString* resolved = path.stringByResolvingSymlinksInPath; ![resolved isEqualToString:path])
            info.bundlePaths << QString::fromNSString(resolved);
    }
    return info;
}

}  // namespace

struct MacWorkspace::Observer {
    id token = nil;
};

MacWorkspace::MacWorkspace(QObject* parent) : Workspace(parent), observer_(std::make_unique<Observer>())
{
    observer_->token = [[NSWorkspace sharedWorkspace].notificationCenter
        addObserverForName:NSWorkspaceDidActivateApplicationNotification
                    object:nil
                     queue:[NSOperationQueue mainQueue]
                usingBlock:^(NSNotification* note) {
                  NSRunningApplication* app = note.userInfo[NSWorkspaceApplicationKey];
                  if (app) emit applicationActivated(infoOf(app));
                }];
}

MacWorkspace::~MacWorkspace() { [[NSWorkspace sharedWorkspace].notificationCenter removeObserver:observer_->token]; }

std::optional<AppInfo> MacWorkspace::frontmostApplication()
{
    NSRunningApplication* app = [NSWorkspace sharedWorkspace].frontmostApplication;
    if (!app) return std::nullopt;
    return infoOf(app);
}

qint64 MacWorkspace::ownPid() const { return getpid(); }

void MacWorkspace::activateApplication(const AppInfo& info)
{
    NSRunningApplication* app = [NSRunningApplication runningApplicationWithProcessIdentifier:pid_t(info.pid)];
    if (!app && !info.bundleId.isEmpty())
        app = [NSRunningApplication runningApplicationsWithBundleIdentifier:info.bundleId.toNSString()].firstObject;
    [app activateWithOptions:0];
}

QIcon MacWorkspace::applicationIcon(const QString& bundleId)
{
    if (bundleId.isEmpty()) return {};
    NSURL* url = [[NSWorkspace sharedWorkspace] URLForApplicationWithBundleIdentifier:bundleId.toNSString()];
    if (!url) return {};
    const QImage image = imageFrom([[NSWorkspace sharedWorkspace] iconForFile:url.path], 64);
    return image.isNull() ? QIcon() : QIcon(QPixmap::fromImage(image));
}

QString MacWorkspace::applicationsFolder() { return QStringLiteral("/Applications"); }

std::optional<AppInfo> MacWorkspace::applicationAt(const QString& path)
{
    NSBundle* bundle = [NSBundle bundleWithPath:path.toNSString()];
    if (!bundle || !bundle.bundleIdentifier) return std::nullopt;
    NSString* name = [bundle objectForInfoDictionaryKey:@"CFBundleDisplayName"];
    if (![name isKindOfClass:[NSString class]]) name = [bundle objectForInfoDictionaryKey:@"CFBundleName"];
    if (![name isKindOfClass:[NSString class]]) name = bundle.bundleURL.lastPathComponent.stringByDeletingPathExtension;
    return AppInfo{0, QString::fromNSString(bundle.bundleIdentifier), QString::fromNSString(name)};
}

QList<AppInfo> MacWorkspace::runningApplications()
{
    QList<AppInfo> apps;
    for (NSRunningApplication* app in [NSWorkspace sharedWorkspace].runningApplications)
        if (app.activationPolicy == NSApplicationActivationPolicyRegular && app.processIdentifier != getpid())
            apps << infoOf(app);
    return apps;
}

bool MacWorkspace::closeWindows(qint64 pid)
{
    const ax::Element app = ax::application(pid_t(pid), ax::QueryTimeout);
    const auto windows = app ? ax::elements(app.get(), kAXWindowsAttribute) : std::nullopt;
    if (!windows || windows->empty()) return false;
    // Each window's own close button, as the user would press it.
    bool pressed = false;
    for (const ax::Element& window : *windows)
        if (const ax::Element button = ax::element(window.get(), kAXCloseButtonAttribute))
            pressed |= AXUIElementPerformAction(button.get(), kAXPressAction) == kAXErrorSuccess;
    return pressed;
}

}  // namespace orlo::mac
