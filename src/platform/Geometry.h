#pragma once
#include <QRectF>

namespace orlo {

// Screen geometry is in screen coordinates: origin at the bottom left of the primary
// screen, y grows upwards, points as doubles. A QRectF here holds (x, y, width, height)
// with y the bottom edge. Flipping to top-left coordinates happens only at the window
// system boundary, with the height of the primary screen. The top-left ("accessibility")
// coordinates have their origin at the top left of the primary screen.
inline QRectF flipped(const QRectF& r, double primaryHeight)
{
    return QRectF(r.x(), primaryHeight - r.y() - r.height(), r.width(), r.height());
}

}  // namespace orlo
