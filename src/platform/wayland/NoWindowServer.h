#pragma once
#include "platform/WindowServer.h"

namespace orlo::wayland {

// A compositor that lets Orlo neither see nor move other programs' windows: every question
// has an empty answer and every change is left undone.
class NoWindowServer : public WindowServer {
public:
    std::optional<QRectF> frame(WindowId) override { return std::nullopt; }
    void setFrame(WindowId, const QRectF&) override {}
    bool isStandard(WindowId) override { return false; }
    bool isMinimized(WindowId) override { return false; }
    bool isFullScreen(WindowId) override { return false; }
    std::optional<WindowRef> windowAt(const QPointF&) override { return std::nullopt; }
    QList<WindowId> windows(qint64) override { return {}; }
    std::optional<WindowId> focusedWindow(qint64) override { return std::nullopt; }
    std::optional<WindowId> mainWindow(qint64) override { return std::nullopt; }
    QList<qint64> regularApplications() override { return {}; }
    // Wayland compositors always blend translucent windows.
    bool canShowTranslucentWindows() override { return true; }
};

}  // namespace orlo::wayland
