#include "windows/SnapArea.h"
#include <algorithm>
#include <cmath>
#include <utility>

namespace orlo {

namespace {
struct AreaInfo {
    const char* raw;
    const char* title;
    double fx, fy, fw, fh;
};

constexpr double third = 1.0 / 3.0;
constexpr double twoThirds = 2.0 / 3.0;

constexpr AreaInfo areas[SnapArea::count] = {
    {"maximize", "Maximize", 0, 0, 1, 1},
    {"almostMaximize", "Almost maximize", 0.05, 0.05, 0.9, 0.9},
    {"center", "Center", 0, 0, 0, 0},
    {"leftHalf", "Left half", 0, 0, 0.5, 1},
    {"rightHalf", "Right half", 0.5, 0, 0.5, 1},
    {"topHalf", "Top half", 0, 0, 1, 0.5},
    {"bottomHalf", "Bottom half", 0, 0.5, 1, 0.5},
    {"leftThird", "Left third", 0, 0, third, 1},
    {"centerThird", "Center third", third, 0, third, 1},
    {"rightThird", "Right third", twoThirds, 0, third, 1},
    {"leftTwoThirds", "Left two-thirds", 0, 0, twoThirds, 1},
    {"rightTwoThirds", "Right two-thirds", third, 0, twoThirds, 1},
    {"topLeft", "Top left quarter", 0, 0, 0.5, 0.5},
    {"topRight", "Top right quarter", 0.5, 0, 0.5, 0.5},
    {"bottomLeft", "Bottom left quarter", 0, 0.5, 0.5, 0.5},
    {"bottomRight", "Bottom right quarter", 0.5, 0.5, 0.5, 0.5},
};

// Grows the origin and shrinks the size by d on every side, in that order of operations.
QRectF inset(const QRectF& r, double d) { return QRectF(r.x() + d, r.y() + d, r.width() - 2 * d, r.height() - 2 * d); }
}  // namespace

template <std::size_t... I>
constexpr std::array<SnapArea, sizeof...(I)> everyArea(std::index_sequence<I...>)
{
    return {SnapArea(SnapArea::Value(I))...};
}

const std::array<SnapArea, SnapArea::count>& SnapArea::all()
{
    static constexpr auto list = everyArea(std::make_index_sequence<count>());
    return list;
}

std::optional<SnapArea> SnapArea::fromRawValue(const QString& raw)
{
    for (int i = 0; i < count; ++i)
        if (raw == QLatin1String(areas[i].raw)) return SnapArea(Value(i));
    return std::nullopt;
}

QString SnapArea::rawValue() const { return QString::fromLatin1(areas[value_].raw); }

QString SnapArea::title() const { return QString::fromUtf8(areas[value_].title); }

QRectF SnapArea::unitRect() const
{
    const AreaInfo& a = areas[value_];
    return QRectF(a.fx, a.fy, a.fw, a.fh);
}

QRectF SnapArea::frame(const QRectF& visible, double gap, const QRectF& current) const
{
    if (value_ != center) return frame(unitRect(), visible, gap);
    // Centring keeps the window's size unless it does not fit inside the gap.
    const QRectF inner = inset(visible, gap);
    const double w = std::min(current.width(), inner.width());
    const double h = std::min(current.height(), inner.height());
    const double midX = inner.x() + inner.width() / 2;
    const double midY = inner.y() + inner.height() / 2;
    return integral(QRectF(midX - w / 2, midY - h / 2, w, h));
}

QRectF SnapArea::frame(const QRectF& unit, const QRectF& visible, double gap)
{
    // Half the gap around the usable area and half around each cell: windows end up one
    // gap from the screen's edges and one gap from each other.
    const double half = gap / 2;
    const QRectF inner = inset(visible, half);
    const double x = inner.x() + unit.x() * inner.width();
    const double w = unit.width() * inner.width();
    const double top = inner.y() + inner.height();
    const double y = top - (unit.y() + unit.height()) * inner.height();
    const double h = unit.height() * inner.height();
    return integral(inset(QRectF(x, y, w, h), half));
}

QRectF SnapArea::integral(const QRectF& r)
{
    const QRectF n = r.normalized();
    const double x0 = std::floor(n.x()), y0 = std::floor(n.y());
    const double x1 = std::ceil(n.x() + n.width()), y1 = std::ceil(n.y() + n.height());
    return QRectF(x0, y0, x1 - x0, y1 - y0);
}

}  // namespace orlo
