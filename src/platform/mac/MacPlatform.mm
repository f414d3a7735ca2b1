#include "platform/Platform.h"
#include "platform/mac/MacAccessibility.h"
#include "platform/mac/MacEdgeTiling.h"
#include "platform/posix/WindowOverlay.h"
#include "platform/mac/MacEventTap.h"
#include "platform/mac/MacGamma.h"
#include "platform/mac/MacHotKeyService.h"
#include "platform/mac/MacKeySynth.h"
#include "platform/mac/MacKeyboardLayout.h"
#include "platform/mac/MacLoginItem.h"
#include "platform/mac/MacMouseMonitor.h"
#include "platform/mac/MacNotifications.h"
#include "platform/mac/MacPasteboard.h"
#include "platform/mac/MacPowerAssertion.h"
#include "platform/mac/MacProcessTable.h"
#include "platform/mac/MacScreens.h"
#include "platform/mac/MacScripting.h"
#include "platform/mac/MacSettingsStorage.h"
#include "platform/mac/MacSystemSwitcher.h"
#include "platform/mac/MacUserFiles.h"
#include "platform/mac/MacWindowCatalog.h"
#include "platform/mac/MacWindowHandles.h"
#include "platform/mac/MacWindowServer.h"
#include "platform/mac/MacWorkspace.h"
#import <Foundation/Foundation.h>
#include <QDir>

// No Core Foundation object is created here.
namespace orlo {

namespace {
struct HandlesHolder {
    mac::MacWindowHandles handles;
};
// The macOS platform: the window handles are a base declared before Platform, so they are
// destroyed after the two ports that hand them out.
struct MacPlatform : HandlesHolder, Platform {};

// Orlo's bundle identifier; the same when a build runs outside its bundle.
QString applicationId()
{
    NSString* id = [NSBundle mainBundle].bundleIdentifier;
    return id ? QString::fromNSString(id) : QStringLiteral(ORLO_APP_ID);
}
}  // namespace

QString prepareSystemDisplay()
{
    // The window server is always there for a user's process; Qt's Cocoa plugin needs nothing.
    return {};
}

std::unique_ptr<Platform> createSystemPlatform(QString*)
{
    auto platform = std::make_unique<MacPlatform>();
    // Before anything else: what an Orlo that was killed left changed is put back.
    platform->gamma = std::make_unique<mac::MacGamma>();
    platform->systemSwitcher = std::make_unique<mac::MacSystemSwitcher>();
    platform->accessibility = std::make_unique<mac::MacAccessibility>();
    platform->keyboardLayout = std::make_unique<mac::MacKeyboardLayout>();
    platform->hotKeys = std::make_unique<mac::MacHotKeyService>();
    platform->eventTaps = std::make_unique<mac::MacEventTapBackend>();
    platform->workspace = std::make_unique<mac::MacWorkspace>();
    platform->screens = std::make_unique<mac::MacScreens>();
    platform->windowServer = std::make_unique<mac::MacWindowServer>(platform->handles);
    platform->windowCatalog = std::make_unique<mac::MacWindowCatalog>(platform->handles);
    platform->mouseMonitor = std::make_unique<mac::MacMouseMonitor>();
    platform->loginItem = std::make_unique<mac::MacLoginItem>();
    platform->settings = std::make_unique<mac::MacSettingsStorage>(applicationId());
    platform->pasteboard = std::make_unique<mac::MacPasteboard>();
    platform->keySynth = std::make_unique<mac::MacKeySynth>();
    auto scripting = std::make_unique<mac::MacScripting>();
    platform->userFiles = std::make_unique<mac::MacUserFiles>(QDir::homePath(), *scripting);
    platform->scripting = std::move(scripting);
    platform->processes = std::make_unique<mac::MacProcessTable>();
    platform->power = std::make_unique<mac::MacPowerAssertion>();
    platform->notifications = std::make_unique<mac::MacNotifications>();
    platform->edgeTiling = std::make_unique<mac::MacEdgeTiling>();
    platform->overlay = std::make_unique<WindowOverlay>();
    return platform;
}

}  // namespace orlo
