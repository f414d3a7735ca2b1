#pragma once
#include "platform/WindowServer.h"
#include "platform/mac/MacAXElement.h"
#include <QMultiHash>
#include <unordered_map>

namespace orlo::mac {

// The window ids Orlo's features hold for other applications' windows, each standing for
// one Accessibility window element. A window reached again by another route (the focused
// window, the window under the pointer) gets the id it already has: elements are compared
// by CFEqual. Main thread only.
class MacWindowHandles {
public:
    MacWindowHandles() = default;
    MacWindowHandles(const MacWindowHandles&) = delete;
    MacWindowHandles& operator=(const MacWindowHandles&) = delete;

    WindowId idFor(AXUIElementRef window);
    // Borrowed; nullptr for an id Orlo never handed out or has forgotten.
    AXUIElementRef element(WindowId id) const;

private:
    // Forgets the windows that no longer exist, once there are many.
    void prune();

    std::unordered_map<WindowId, ax::Element> byId_;  // Qt's containers want copyable values
    QMultiHash<CFHashCode, WindowId> byHash_;
    WindowId next_ = 1;
    std::size_t pruneAt_ = 512;
};

}  // namespace orlo::mac
