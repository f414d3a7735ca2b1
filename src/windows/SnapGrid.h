#pragma once
#include <QList>
#include <QRectF>

namespace orlo {

// The cells of "Arrange windows in a grid": as many columns as keep the cells near a 1.6
// aspect ratio, rows filled left to right, the last row's cells sharing the full width.
class SnapGrid {
public:
    // One unit rectangle (x, y from the top, width, height) per window, in window order, for
    // n windows in a usable area of the given size.
    static QList<QRectF> cells(int n, double width, double height);
};

}  // namespace orlo
