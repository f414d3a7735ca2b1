#include "windows/SnapGrid.h"
#include <algorithm>
#include <cmath>

namespace orlo {

static constexpr double cellAspect = 1.6;

QList<QRectF> SnapGrid::cells(int n, double width, double height)
{
    QList<QRectF> list;
    if (n <= 0) return list;
    const double h = height <= 1 ? 1 : height;
    const int columns = std::min(n, int(std::ceil(std::sqrt(std::max((width / h) / cellAspect, 1.0) * n))));
    const int rows = (n + columns - 1) / columns;
    const int lastRow = n - (rows - 1) * columns;
    for (int i = 0; i < n; ++i) {
        const int r = i / columns, c = i % columns;
        const int k = r == rows - 1 ? lastRow : columns;
        list << QRectF(double(c) / k, double(r) / rows, 1.0 / k, 1.0 / rows);
    }
    return list;
}

}  // namespace orlo
