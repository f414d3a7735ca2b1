#include "platform/mac/MacWindowHandles.h"
#include <algorithm>

// Core Foundation ownership: the table keeps one reference to each element, in a CFRef.
namespace orlo::mac {

WindowId MacWindowHandles::idFor(AXUIElementRef window)
{
    const CFHashCode hash = CFHash(window);
    for (auto it = byHash_.constFind(hash); it != byHash_.constEnd() && it.key() == hash; ++it)
        if (CFEqual(element(it.value()), window)) return it.value();
    if (byId_.size() >= pruneAt_) {
        prune();
        pruneAt_ = std::max(pruneAt_, byId_.size() * 2);
    }
    const WindowId id = next_++;
    byId_.emplace(id, ax::Element::retained(window));
    byHash_.insert(hash, id);
    return id;
}

AXUIElementRef MacWindowHandles::element(WindowId id) const
{
    const auto it = byId_.find(id);
    return it == byId_.end() ? nullptr : it->second.get();
}

void MacWindowHandles::prune()
{
    for (auto it = byHash_.begin(); it != byHash_.end();) {
        CFRef<CFTypeRef> role;
        if (AXUIElementCopyAttributeValue(element(it.value()), kAXRoleAttribute, role.out()) == kAXErrorInvalidUIElement) {
            byId_.erase(it.value());
            it = byHash_.erase(it);
        } else {
            ++it;
        }
    }
}

}  // namespace orlo::mac
