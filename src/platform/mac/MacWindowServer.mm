#include "platform/mac/MacWindowServer.h"
#include "platform/mac/MacWindowHandles.h"
#import <AppKit/AppKit.h>
#include <unistd.h>

// Core Foundation ownership: every element is held in a CFRef (MacAXElement.h); the table of
// window handles keeps its own reference to each window it hands out an id for.
namespace orlo::mac {

namespace {
// Apple publishes no constants for these two attributes; they are the names applications answer to.
const CFStringRef EnhancedUserInterface = CFSTR("AXEnhancedUserInterface");
const CFStringRef FullScreen = CFSTR("AXFullScreen");
}  // namespace

MacWindowServer::MacWindowServer(MacWindowHandles& handles) : handles_(handles) {}

std::optional<QRectF> MacWindowServer::frame(WindowId window)
{
    AXUIElementRef element = handles_.element(window);
    return element ? ax::frame(element) : std::nullopt;
}

void MacWindowServer::setFrame(WindowId window, const QRectF& frame)
{
    AXUIElementRef element = handles_.element(window);
    const auto pid = element ? ax::pidOf(element) : std::nullopt;
    if (!pid) return;
    // An application with the enhanced interface on (for assistive technologies) animates
    // every change and ends up elsewhere: it is switched off for the move only.
    const ax::Element app = ax::application(*pid, ax::QueryTimeout);
    const bool enhanced = app && ax::boolean(app.get(), EnhancedUserInterface).value_or(false);
    if (enhanced) ax::setBoolean(app.get(), EnhancedUserInterface, false);
    ax::setFrame(element, frame);
    if (enhanced) ax::setBoolean(app.get(), EnhancedUserInterface, true);
}

bool MacWindowServer::isStandard(WindowId window)
{
    AXUIElementRef element = handles_.element(window);
    return element && ax::string(element, kAXSubroleAttribute) == QStringLiteral("AXStandardWindow");
}

bool MacWindowServer::isMinimized(WindowId window)
{
    AXUIElementRef element = handles_.element(window);
    return element && ax::boolean(element, kAXMinimizedAttribute).value_or(false);
}

bool MacWindowServer::isFullScreen(WindowId window)
{
    AXUIElementRef element = handles_.element(window);
    return element && ax::boolean(element, FullScreen).value_or(false);
}

std::optional<WindowRef> MacWindowServer::windowAt(const QPointF& point)
{
    const ax::Element systemWide(AXUIElementCreateSystemWide());
    if (!systemWide) return std::nullopt;
    AXUIElementSetMessagingTimeout(systemWide.get(), ax::HitTestTimeout);
    ax::Element hit;
    if (AXUIElementCopyElementAtPosition(systemWide.get(), float(point.x()), float(point.y()), hit.out()) != kAXErrorSuccess || !hit)
        return std::nullopt;
    const auto pid = ax::pidOf(hit.get());
    const ax::Element window = ax::windowOf(hit.get());
    if (!pid || !window) return std::nullopt;
    return WindowRef{handles_.idFor(window.get()), *pid};
}

QList<WindowId> MacWindowServer::windows(qint64 pid)
{
    const ax::Element app = ax::application(pid_t(pid), ax::QueryTimeout);
    const auto elements = app ? ax::elements(app.get(), kAXWindowsAttribute) : std::nullopt;
    QList<WindowId> out;
    if (elements)
        for (const ax::Element& window : *elements) out << handles_.idFor(window.get());
    return out;
}

std::optional<WindowId> MacWindowServer::focusedWindow(qint64 pid)
{
    const ax::Element app = ax::application(pid_t(pid), ax::QueryTimeout);
    if (!app) return std::nullopt;
    for (CFStringRef attribute : {kAXFocusedWindowAttribute, kAXMainWindowAttribute})
        if (const ax::Element window = ax::element(app.get(), attribute)) return handles_.idFor(window.get());
    const QList<WindowId> all = windows(pid);
    if (all.isEmpty()) return std::nullopt;
    return all.first();
}

std::optional<WindowId> MacWindowServer::mainWindow(qint64 pid)
{
    const ax::Element app = ax::application(pid_t(pid), ax::QueryTimeout);
    if (!app) return std::nullopt;
    if (const ax::Element window = ax::element(app.get(), kAXMainWindowAttribute)) return handles_.idFor(window.get());
    const QList<WindowId> all = windows(pid);
    if (all.isEmpty()) return std::nullopt;
    return all.first();
}

QList<qint64> MacWindowServer::regularApplications()
{
    QList<qint64> pids;
    for (NSRunningApplication* app in [NSWorkspace sharedWorkspace].runningApplications)
        if (app.activationPolicy == NSApplicationActivationPolicyRegular && app.processIdentifier != getpid())
            pids << app.processIdentifier;
    return pids;
}

}  // namespace orlo::mac
