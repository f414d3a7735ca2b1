#pragma once
#include <QPointF>
#include <QRectF>

namespace orlo::x11 {

// X11 measures in device pixels, Orlo in points: Qt's device-independent pixels, so that
// the windows Orlo draws (the snap preview) and the frames it computes share one unit. At
// QT_SCALE_FACTOR=2, or Xft.dpi 192, a point is two pixels.
class PointScale {
public:
    static qreal pixelsPerPoint();
    static QRectF toPoints(const QRectF& pixels);
    static QPointF toPoints(const QPointF& pixels);
    static QRectF toPixels(const QRectF& points);
    static QPointF toPixels(const QPointF& points);
};

}  // namespace orlo::x11
