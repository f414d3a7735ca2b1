#include "kit/SnapScreens.h"
#include <QGuiApplication>
#include <QScreen>
#include "platform/Geometry.h"
#include <algorithm>

namespace orlo {

SnapScreens::SnapScreens(QList<ScreenInfo> screens) : screens_(std::move(screens)) {}

double SnapScreens::primaryTop() const
{
    if (screens_.isEmpty()) return 0;
    const QRectF& f = screens_.first().frame;
    return f.y() + f.height();
}

QRectF SnapScreens::flip(const QRectF& rect) const { return flipped(rect, primaryTop()); }

QPointF SnapScreens::qtShift(const ScreenInfo& screen) const
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    return qtOrigin(screen) - flip(screen.frame).topLeft() - (primary ? QPointF(primary->geometry().topLeft()) : QPointF());
}

std::optional<ScreenInfo> SnapScreens::screenAtQtPoint(const QPointF& point) const
{
    for (const ScreenInfo& screen : screens_)
        if (QRectF(qtOrigin(screen), flip(screen.frame).size()).contains(point)) return screen;
    return std::nullopt;
}

QPointF SnapScreens::qtOrigin(const ScreenInfo& screen) const
{
    const QRectF frame = flip(screen.frame);
    // The same screen in Qt's list has its name and its size in points.
    for (const QScreen* qt : QGuiApplication::screens())
        if (qt->name() == screen.name && qAbs(qt->geometry().width() - frame.width()) < 1.5
            && qAbs(qt->geometry().height() - frame.height()) < 1.5)
            return qt->geometry().topLeft();
    // Otherwise Qt is taken to lay the screens out as Orlo does, from the primary's corner.
    const QScreen* primary = QGuiApplication::primaryScreen();
    return frame.topLeft() + (primary ? QPointF(primary->geometry().topLeft()) : QPointF());
}

std::optional<ScreenInfo> SnapScreens::screenAt(const QPointF& p) const
{
    for (const ScreenInfo& s : screens_) {
        const QRectF& f = s.frame;
        if (p.x() >= f.x() && p.x() < f.x() + f.width() && p.y() > f.y() && p.y() <= f.y() + f.height()) return s;
    }
    return std::nullopt;
}

std::optional<ScreenInfo> SnapScreens::screenFor(const QRectF& rect) const
{
    const ScreenInfo* best = nullptr;
    double bestArea = 0;
    for (const ScreenInfo& s : screens_) {
        const QRectF overlap = s.frame.intersected(rect);
        const double area = overlap.isEmpty() ? 0 : overlap.width() * overlap.height();
        if (!best || area > bestArea) {
            best = &s;
            bestArea = area;
        }
    }
    if (best && bestArea > 0) return *best;
    if (auto s = screenAt(rect.center())) return s;
    if (!screens_.isEmpty()) return screens_.first();
    return std::nullopt;
}

QList<ScreenInfo> SnapScreens::ordered() const
{
    QList<ScreenInfo> list = screens_;
    std::stable_sort(list.begin(), list.end(), [](const ScreenInfo& a, const ScreenInfo& b) {
        if (a.frame.x() != b.frame.x()) return a.frame.x() < b.frame.x();
        return a.frame.y() < b.frame.y();
    });
    return list;
}

int SnapScreens::orderedIndex(const ScreenInfo& screen) const
{
    const QList<ScreenInfo> list = ordered();
    for (int i = 0; i < list.size(); ++i)
        if (same(list[i], screen)) return i;
    return -1;
}

}  // namespace orlo
