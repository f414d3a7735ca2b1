#pragma once
#include "platform/WindowServer.h"

namespace orlo::mac {

class MacWindowHandles;

// Other applications' windows through the Accessibility interface (AXUIElement). Main thread
// only; every call to an application is bounded by a messaging timeout.
class MacWindowServer : public WindowServer {
public:
    explicit MacWindowServer(MacWindowHandles& handles);

    std::optional<QRectF> frame(WindowId window) override;
    void setFrame(WindowId window, const QRectF& frame) override;
    bool isStandard(WindowId window) override;
    bool isMinimized(WindowId window) override;
    bool isFullScreen(WindowId window) override;
    std::optional<WindowRef> windowAt(const QPointF& point) override;
    QList<WindowId> windows(qint64 pid) override;
    std::optional<WindowId> focusedWindow(qint64 pid) override;
    std::optional<WindowId> mainWindow(qint64 pid) override;
    QList<qint64> regularApplications() override;
    bool canShowTranslucentWindows() override { return true; }

private:
    MacWindowHandles& handles_;
};

}  // namespace orlo::mac
