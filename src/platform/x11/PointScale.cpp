#include "platform/x11/PointScale.h"
#include <QGuiApplication>
#include <QScreen>

namespace orlo::x11 {

qreal PointScale::pixelsPerPoint()
{
    // Qt gives every screen of an X display the same ratio.
    const QScreen* screen = qGuiApp ? QGuiApplication::primaryScreen() : nullptr;
    return screen && screen->devicePixelRatio() > 0 ? screen->devicePixelRatio() : 1.0;
}

QRectF PointScale::toPoints(const QRectF& pixels)
{
    const qreal s = pixelsPerPoint();
    return QRectF(pixels.x() / s, pixels.y() / s, pixels.width() / s, pixels.height() / s);
}

QPointF PointScale::toPoints(const QPointF& pixels) { return pixels / pixelsPerPoint(); }

QRectF PointScale::toPixels(const QRectF& points)
{
    const qreal s = pixelsPerPoint();
    return QRectF(points.x() * s, points.y() * s, points.width() * s, points.height() * s);
}

QPointF PointScale::toPixels(const QPointF& points) { return points * pixelsPerPoint(); }

}  // namespace orlo::x11
