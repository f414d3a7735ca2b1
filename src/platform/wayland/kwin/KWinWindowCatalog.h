#pragma once
#include "platform/WindowCatalog.h"

namespace orlo::kwin {

class KWinApplications;
class KWinDesktop;

// The switcher's windows on KWin. The on-screen list comes most recently active first, from
// the order in which KWin activated them; a window's number and its element are both Orlo's
// number for it, so each application window pairs with its entry by number.
class KWinWindowCatalog : public WindowCatalog {
public:
    KWinWindowCatalog(KWinDesktop& desktop, KWinApplications& apps) : desktop_(desktop), apps_(apps) {}

    QList<RunningApp> runningApplications() override;
    QList<ScreenWindow> onScreenWindows() override;
    std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) override;
    void raise(WindowId element, bool unminimize) override;
    void activate(qint64 pid) override;

private:
    KWinDesktop& desktop_;
    KWinApplications& apps_;
};

}  // namespace orlo::kwin
