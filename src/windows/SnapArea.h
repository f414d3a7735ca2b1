#pragma once
#include <QRectF>
#include <QString>
#include <array>
#include <optional>

namespace orlo {

// A named part of a screen that a window can be snapped into. Frames are in screen
// coordinates (y up, see Geometry.h).
class SnapArea {
public:
    enum Value : quint8 {
        maximize, almostMaximize, center, leftHalf, rightHalf, topHalf, bottomHalf,
        leftThird, centerThird, rightThird, leftTwoThirds, rightTwoThirds,
        topLeft, topRight, bottomLeft, bottomRight,
    };
    static constexpr int count = 16;

    constexpr SnapArea(Value value) : value_(value) {}
    constexpr operator Value() const { return value_; }

    static const std::array<SnapArea, count>& all();
    // The case name, e.g. "leftHalf"; titles are not accepted.
    static std::optional<SnapArea> fromRawValue(const QString& raw);
    QString rawValue() const;
    QString title() const;

    // (x, y from the top, width, height) as fractions of the usable area; empty for center,
    // which keeps the window's size.
    QRectF unitRect() const;

    // Where a window whose frame is `current` goes on a screen whose usable area is
    // `visible`, with `gap` points between windows and at the screen's edges.
    QRectF frame(const QRectF& visible, double gap, const QRectF& current) const;
    // A unit rectangle (y from the top) turned into a frame: half the gap in from the usable
    // area, half the gap in from the cell, rounded outward to whole points.
    static QRectF frame(const QRectF& unit, const QRectF& visible, double gap);
    // The smallest rectangle of whole points that contains r.
    static QRectF integral(const QRectF& r);

private:
    Value value_;
};

}  // namespace orlo
