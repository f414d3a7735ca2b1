#pragma once
#include <QString>

namespace orlo {

// The window manager's own tiling of windows dropped on a screen edge. Left on, it acts on
// the same drags as Orlo's drag to snap: two previews, and two placements on release.
class EdgeTiling {
public:
    virtual ~EdgeTiling() = default;
    // Where the user switches the window manager's edge tiling off, in the words of the
    // desktop's own settings; empty when it is off or the window manager is not known.
    virtual QString switchOffPlace() = 0;
};

}  // namespace orlo
