#pragma once
#include "platform/WindowServer.h"
#include "platform/wayland/kwin/KWinReport.h"

namespace orlo::kwin {

class KWinDesktop;

// Other programs' windows on KWin, read from the script's last report and moved through it.
class KWinWindowServer : public WindowServer {
public:
    explicit KWinWindowServer(KWinDesktop& desktop) : desktop_(desktop) {}

    std::optional<QRectF> frame(WindowId window) override;
    void setFrame(WindowId window, const QRectF& frame) override;
    bool isStandard(WindowId window) override;
    bool isMinimized(WindowId window) override;
    bool isFullScreen(WindowId window) override;
    bool isOnCurrentDesktop(WindowId window) override;
    std::optional<WindowRef> windowAt(const QPointF& point) override;
    QList<WindowId> windows(qint64 pid) override;
    std::optional<WindowId> focusedWindow(qint64 pid) override;
    std::optional<WindowId> mainWindow(qint64 pid) override;
    QList<qint64> regularApplications() override;
    // KWin on Wayland always composites.
    bool canShowTranslucentWindows() override { return true; }

private:
    bool flag(WindowId window, bool KWinWindow::*which) const;

    KWinDesktop& desktop_;
};

}  // namespace orlo::kwin
