#pragma once
#include "platform/WindowCatalog.h"

namespace orlo::mac {

class MacWindowHandles;

// What the switcher lists: the window server's on-screen windows (CGWindowListCopyWindowInfo)
// and each application's Accessibility windows, which the switcher pairs with them.
class MacWindowCatalog : public WindowCatalog {
public:
    explicit MacWindowCatalog(MacWindowHandles& handles);

    QList<RunningApp> runningApplications() override;
    QList<ScreenWindow> onScreenWindows() override;
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) override;
    void raise(WindowId element, bool unminimize) override;
    void activate(qint64 pid) override;

private:
    MacWindowHandles& handles_;
};

}  // namespace orlo::mac
