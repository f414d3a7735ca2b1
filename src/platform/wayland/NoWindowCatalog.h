#pragma once
#include "platform/WindowCatalog.h"

namespace orlo::wayland {

// A compositor that does not list other programs' windows: the switcher has nothing to show.
class NoWindowCatalog : public WindowCatalog {
public:
    QList<RunningApp> runningApplications() override { return {}; }
    QList<ScreenWindow> onScreenWindows() override { return {}; }
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp&) override { return std::nullopt; }
    void raise(WindowId, bool) override {}
    void activate(qint64) override {}
};

}  // namespace orlo::wayland
