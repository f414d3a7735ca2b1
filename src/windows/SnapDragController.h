#pragma once
#include "platform/Screens.h"
#include "windows/SnapArea.h"
#include "windows/SnapWindow.h"
#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>
#include <functional>
#include <optional>

namespace orlo {

class MouseMonitor;
class SnapOverlayPanel;
class SnapSettings;
class WindowServer;

// Drag to snap: while the user drags another application's window by its title bar, a
// screen edge or corner under the pointer previews an area, and releasing the button snaps
// the window into it.
class SnapDragController : public QObject {
    Q_OBJECT
public:
    // Called on release with the window, the area, its screen and the frame the window had
    // when the drag began (top-left coordinates).
    using Snap = std::function<void(const SnapWindow&, SnapArea, const ScreenInfo&, const QRectF& startFrame)>;

    SnapDragController(MouseMonitor& mouse, WindowServer& windows, Screens& screens, const SnapSettings& settings,
                       qint64 ownPid, Snap snap, QObject* parent = nullptr);
    ~SnapDragController() override;

    void start();
    void stop();
    bool isStarted() const { return started_; }

    // The area of a hot zone under a point of a screen (screen coordinates), if any.
    static std::optional<SnapArea> zone(const QPointF& point, const ScreenInfo& screen);

    struct Target {
        SnapArea area;
        quint32 displayId;
        bool operator==(const Target&) const = default;
    };
    std::optional<Target> target() const { return target_; }
    // The preview panel of a display, when one has been shown there.
    SnapOverlayPanel* overlay(quint32 displayId) const { return overlays_.value(displayId); }

private:
    void mouseDown(QPointF location);
    void mouseDragged(QPointF location);
    void mouseUp(QPointF location);
    void show(SnapArea area, const ScreenInfo& screen);
    void hideOverlays();

    MouseMonitor& mouse_;
    WindowServer& windows_;
    Screens& screens_;
    const SnapSettings& settings_;
    qint64 ownPid_;
    Snap snap_;
    bool started_ = false;
    std::optional<SnapWindow> window_;
    QRectF startFrame_;
    bool dragging_ = false;
    QElapsedTimer lastCheck_;
    // Looks again while the window has not been seen to move: the pointer may already rest
    // at an edge when the window manager catches up, and a resting pointer reports nothing.
    QTimer recheck_;
    QPointF lastLocation_;
    std::optional<Target> target_;
    QHash<quint32, SnapOverlayPanel*> overlays_;
};

}  // namespace orlo
