#include "windows/SnapOverlayPanel.h"
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

namespace orlo {

namespace {
constexpr int outline = 6;  // the opaque outline drawn where translucency is missing
constexpr double radius = 12;

QPainterPath rounded(const QRectF& r, double inset)
{
    QPainterPath path;
    path.addRoundedRect(r.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    return path;
}
}  // namespace

SnapOverlayPanel::SnapOverlayPanel(bool translucent, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint
                          | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint),
      translucent_(translucent)
{
    setObjectName(QStringLiteral("SnapOverlayPanel"));
    setWindowTitle(QStringLiteral("Orlo snap preview"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    if (translucent_) setAttribute(Qt::WA_TranslucentBackground);
    animation_.setDuration(120);
    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& v) { setBox(v.toRectF()); });
}

void SnapOverlayPanel::highlight(const QRectF& rect, const QRectF& screen, const QPointF& qtOrigin)
{
    const QRect frame = QRectF(qtOrigin, screen.size()).toAlignedRect();
    const QRectF target = rect.translated(-screen.topLeft()).adjusted(2, 2, -2, -2);

    const bool moved = geometry() != frame;
    if (moved) setGeometry(frame);
    animation_.stop();
    if (isVisible() && !moved && !box_.isEmpty() && box_ != target) {
        animation_.setStartValue(box_);
        animation_.setEndValue(target);
        animation_.start();
    } else {
        setBox(target);
    }
    // Shown, it stands above every managed window: the window manager does not restack it.
    show();
}

void SnapOverlayPanel::setBox(const QRectF& box)
{
    box_ = box;
    if (!translucent_) {
        const QRegion outer(rounded(box, 0).toFillPolygon().toPolygon());
        setMask(outer.subtracted(QRegion(rounded(box, outline).toFillPolygon().toPolygon())));
    }
    update();
}

void SnapOverlayPanel::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    const QColor accent = palette().color(QPalette::Highlight);
    if (!translucent_) {
        // The accent's border, and inside it the fill's tint as it would look over white.
        p.fillRect(rect(), QColor::fromRgbF(0.78 + 0.22 * accent.redF(), 0.78 + 0.22 * accent.greenF(), 0.78 + 0.22 * accent.blueF()));
        p.setPen(QPen(accent, 2));
        p.setRenderHint(QPainter::Antialiasing);
        p.drawPath(rounded(box_, 1));
        p.drawPath(rounded(box_, outline - 1));
        return;
    }
    p.setRenderHint(QPainter::Antialiasing);
    QColor fill = accent, border = accent;
    fill.setAlphaF(0.22f);
    border.setAlphaF(0.9f);
    p.setPen(QPen(border, 2));
    p.setBrush(fill);
    p.drawPath(rounded(box_, 1));
}

}  // namespace orlo
