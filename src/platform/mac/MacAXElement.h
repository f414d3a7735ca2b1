#pragma once
#include "platform/mac/MacCF.h"
#include <ApplicationServices/ApplicationServices.h>
#include <QList>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

// Reading and changing other applications' user-interface elements through the Accessibility
// interface. Main thread only: the Accessibility functions are not safe on other threads.
// Every failure (no permission, an element gone, an application that did not answer within
// its messaging timeout) gives an absent value.
namespace orlo::mac::ax {

using Element = CFRef<AXUIElementRef>;

// How long one application may keep Orlo waiting for an answer.
constexpr float HitTestTimeout = 0.25f;
constexpr float ListingTimeout = 0.25f;
constexpr float QueryTimeout = 0.5f;
constexpr float ActivationTimeout = 0.3f;

// The application's element, asking it with the given messaging timeout.
Element application(pid_t pid, float timeout);
std::optional<pid_t> pidOf(AXUIElementRef element);

CFRef<CFTypeRef> attribute(AXUIElementRef element, CFStringRef name);
std::optional<QString> string(AXUIElementRef element, CFStringRef name);
std::optional<bool> boolean(AXUIElementRef element, CFStringRef name);
Element element(AXUIElementRef element, CFStringRef name);
// An attribute that holds elements ("AXWindows"); nothing when it cannot be read.
std::optional<std::vector<Element>> elements(AXUIElementRef element, CFStringRef name);

bool setBoolean(AXUIElementRef element, CFStringRef name, bool value);

// Position and size, in top-left coordinates.
std::optional<QRectF> frame(AXUIElementRef window);
// Position, then size, then position again: an application that keeps a window on its
// screen may refuse a size that the old position would push off it.
void setFrame(AXUIElementRef window, const QRectF& frame);

// The window itself when the element is one, else the window the element belongs to.
Element windowOf(AXUIElementRef element);

}  // namespace orlo::mac::ax
