#include "windows/SnapDragController.h"
#include "platform/MouseMonitor.h"
#include "windows/SnapOverlayPanel.h"
#include "kit/SnapScreens.h"
#include "windows/SnapSettings.h"
#include <QLoggingCategory>
#include <QTimer>
#include <cmath>

Q_DECLARE_LOGGING_CATEGORY(lcWindows)

namespace orlo {

namespace {
constexpr double edge = 6;     // how close to an edge the pointer must be
constexpr double corner = 90;  // how far along an edge a corner zone reaches
constexpr double moveSlack = 2;
constexpr qint64 checkIntervalMs = 50;
constexpr int snapDelayMs = 50;
}  // namespace

SnapDragController::SnapDragController(MouseMonitor& mouse, WindowServer& windows, Screens& screens,
                                       const SnapSettings& settings, qint64 ownPid, Snap snap, QObject* parent)
    : QObject(parent), mouse_(mouse), windows_(windows), screens_(screens), settings_(settings), ownPid_(ownPid),
      snap_(std::move(snap))
{
    recheck_.setSingleShot(true);
    recheck_.setInterval(checkIntervalMs);
    connect(&recheck_, &QTimer::timeout, this, [this] { mouseDragged(lastLocation_); });
}

SnapDragController::~SnapDragController() { qDeleteAll(overlays_); }

void SnapDragController::start()
{
    if (started_) return;
    if (!mouse_.start()) return;
    started_ = true;
    connect(&mouse_, &MouseMonitor::leftMouseDown, this, &SnapDragController::mouseDown);
    connect(&mouse_, &MouseMonitor::leftMouseDragged, this, &SnapDragController::mouseDragged);
    connect(&mouse_, &MouseMonitor::leftMouseUp, this, &SnapDragController::mouseUp);
}

void SnapDragController::stop()
{
    if (started_) {
        disconnect(&mouse_, nullptr, this, nullptr);
        mouse_.stop();
        started_ = false;
    }
    hideOverlays();
    qDeleteAll(overlays_);
    overlays_.clear();
    recheck_.stop();
    window_.reset();
    target_.reset();
    dragging_ = false;
}

std::optional<SnapArea> SnapDragController::zone(const QPointF& p, const ScreenInfo& screen)
{
    const QRectF& f = screen.frame;
    const double minX = f.x(), maxX = f.x() + f.width(), minY = f.y(), maxY = f.y() + f.height();
    // The far edges are one point wider: pointer positions stop one point short of them.
    const bool atLeft = p.x() <= minX + edge, atRight = p.x() >= maxX - edge - 1;
    const bool atTop = p.y() >= maxY - edge - 1, atBottom = p.y() <= minY + edge;
    const bool nearLeft = p.x() <= minX + corner, nearRight = p.x() >= maxX - corner;
    const bool nearTop = p.y() >= maxY - corner, nearBottom = p.y() <= minY + corner;
    if ((atLeft && nearTop) || (atTop && nearLeft)) return SnapArea::topLeft;
    if ((atRight && nearTop) || (atTop && nearRight)) return SnapArea::topRight;
    if ((atLeft && nearBottom) || (atBottom && nearLeft)) return SnapArea::bottomLeft;
    if ((atRight && nearBottom) || (atBottom && nearRight)) return SnapArea::bottomRight;
    if (atTop) return SnapArea::maximize;
    if (atLeft) return SnapArea::leftHalf;
    if (atRight) return SnapArea::rightHalf;
    if (atBottom) return SnapArea::bottomHalf;
    return std::nullopt;
}

void SnapDragController::mouseDown(QPointF location)
{
    dragging_ = false;
    target_.reset();
    window_.reset();
    recheck_.stop();
    hideOverlays();
    const SnapScreens screens(screens_);
    const QPointF point(location.x(), screens.flipY(location.y()));
    const auto window = SnapWindow::at(windows_, point);
    qCDebug(lcWindows, "mouse down at %g,%g on window %llu", point.x(), point.y(), window ? window->id() : 0ULL);
    if (!window || window->pid() == ownPid_ || !window->isStandard()) return;
    const auto frame = window->frame();
    if (!frame) return;
    window_ = window;
    startFrame_ = *frame;
    lastCheck_.invalidate();
}

void SnapDragController::mouseDragged(QPointF location)
{
    if (!window_) return;
    if (!dragging_) {
        lastLocation_ = location;
        if (lastCheck_.isValid() && lastCheck_.elapsed() < checkIntervalMs) {
            if (!recheck_.isActive()) recheck_.start(int(checkIntervalMs - lastCheck_.elapsed()));
            return;
        }
        lastCheck_.start();
        const auto frame = window_->frame();
        if (!frame) return;
        // Only a window that moves without changing size is dragged by its title bar.
        if (std::abs(frame->width() - startFrame_.width()) > moveSlack
            || std::abs(frame->height() - startFrame_.height()) > moveSlack)
            return;
        if (std::abs(frame->x() - startFrame_.x()) <= moveSlack && std::abs(frame->y() - startFrame_.y()) <= moveSlack) {
            recheck_.start(int(checkIntervalMs));
            return;
        }
        dragging_ = true;
        recheck_.stop();
    }
    const SnapScreens screens(screens_);
    const auto screen = screens.screenAt(location);
    const auto area = screen ? zone(location, *screen) : std::nullopt;
    if (!area) {
        hideOverlays();
        target_.reset();
        return;
    }
    const Target target{*area, screen->displayId};
    if (target_ == target) return;
    target_ = target;
    show(*area, *screen);
}

void SnapDragController::mouseUp(QPointF)
{
    const bool snapping = dragging_ && target_ && window_;
    qCDebug(lcWindows, "mouse up: %s", snapping ? "snapping" : "no snap");
    if (snapping) {
        const SnapScreens screens(screens_);
        for (const ScreenInfo& screen : screens.all()) {
            if (screen.displayId != target_->displayId) continue;
            // Give the window manager a moment to finish its own move first.
            QTimer::singleShot(snapDelayMs, this, [this, window = *window_, area = target_->area, screen, start = startFrame_] {
                snap_(window, area, screen, start);
            });
            break;
        }
    }
    hideOverlays();
    recheck_.stop();
    window_.reset();
    dragging_ = false;
    target_.reset();
}

void SnapDragController::show(SnapArea area, const ScreenInfo& screen)
{
    SnapOverlayPanel*& panel = overlays_[screen.displayId];
    if (!panel) panel = new SnapOverlayPanel(windows_.canShowTranslucentWindows());
    // Only the zone areas are previewed, and none of them depends on the window's size.
    const QRectF frame = area.frame(screen.visibleFrame, settings_.gap(), QRectF());
    const SnapScreens screens(screens_);
    const QRectF box = screens.flip(frame), whole = screens.flip(screen.frame);
    for (auto it = overlays_.begin(); it != overlays_.end(); ++it)
        if (it.key() != screen.displayId) it.value()->hide();
    panel->highlight(box, whole, screens.qtOrigin(screen));
    qCDebug(lcWindows, "preview %s on display %u at %g,%g %gx%g", qPrintable(area.rawValue()), screen.displayId, box.x(),
            box.y(), box.width(), box.height());
}

void SnapDragController::hideOverlays()
{
    for (SnapOverlayPanel* panel : std::as_const(overlays_)) panel->hide();
}

}  // namespace orlo
