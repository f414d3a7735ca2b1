#pragma once
#include "platform/Screens.h"
#include <QList>
#include <QPointF>
#include <QRectF>
#include <optional>

namespace orlo {

// Lookups over the screens as they are at one moment, the primary screen first. Points and
// rectangles are in screen coordinates (y up) unless said otherwise.
class SnapScreens {
public:
    explicit SnapScreens(QList<ScreenInfo> screens);
    explicit SnapScreens(Screens& screens) : SnapScreens(screens.screens()) {}

    const QList<ScreenInfo>& all() const { return screens_; }

    // Between screen coordinates and top-left coordinates; the same in both directions.
    QRectF flip(const QRectF& rect) const;
    // The y of a point in the other coordinate system.
    double flipY(double y) const { return primaryTop() - y; }

    // The first screen containing a point: the point is the top-left corner of a pixel, so a
    // screen holds it when minX <= x < maxX and minY < y <= maxY.
    std::optional<ScreenInfo> screenAt(const QPointF& point) const;
    // The screen showing most of a window; for a window on no screen, the screen under its
    // middle, else the primary screen.
    std::optional<ScreenInfo> screenFor(const QRectF& rect) const;
    // Left to right, then bottom to top: the order of "next display".
    QList<ScreenInfo> ordered() const;
    // Where a screen stands in ordered(), -1 when it is not there.
    int orderedIndex(const ScreenInfo& screen) const;

    // Where a screen's top-left corner is in the coordinates of Orlo's own windows (Qt's).
    // Qt gives each screen an origin of its own: scaled (QT_SCALE_FACTOR=2, Xft.dpi 192), a
    // screen to the right of a 1440-pixel primary starts at 1440 there, where Orlo's points
    // put it at 720.
    QPointF qtOrigin(const ScreenInfo& screen) const;
    // How far Qt has moved a screen from where Orlo's points, counted from the primary's
    // corner, would put it; nothing unless Orlo is scaled and the screen is not the primary.
    QPointF qtShift(const ScreenInfo& screen) const;
    // The screen under a point of Qt's coordinates (the pointer as Qt tells it).
    std::optional<ScreenInfo> screenAtQtPoint(const QPointF& point) const;

    static bool same(const ScreenInfo& a, const ScreenInfo& b) { return a.displayId == b.displayId && a.frame == b.frame; }

private:
    double primaryTop() const;

    QList<ScreenInfo> screens_;
};

}  // namespace orlo
