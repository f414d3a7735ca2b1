#include "kit/ToggleSwitch.h"
#include <QPainter>
#include <QSignalBlocker>

namespace orlo {

ToggleSwitch::ToggleSwitch(QWidget* parent) : QAbstractButton(parent)
{
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ToggleSwitch::show(bool on)
{
    QSignalBlocker block(this);
    setChecked(on);
}

void ToggleSwitch::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(2, 2, -2, -2);
    const double r = track.height() / 2;
    const QColor on = palette().color(QPalette::Highlight);
    const QColor off = palette().color(QPalette::Mid);
    p.setPen(hasFocus() ? QPen(palette().color(QPalette::Highlight).darker(130), 1.5) : Qt::NoPen);
    p.setBrush(isChecked() ? on : off);
    if (!isEnabled()) p.setOpacity(0.5);
    p.drawRoundedRect(track, r, r);
    const double d = track.height() - 4;
    const double x = isChecked() ? track.right() - d - 2 : track.left() + 2;
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawEllipse(QRectF(x, track.top() + 2, d, d));
}

}  // namespace orlo
