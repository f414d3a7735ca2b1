#include "system/UsageRings.h"
#include "system/ByteCount.h"
#include "system/SystemMonitor.h"
#include <QPainter>
#include <algorithm>

namespace orlo {

static constexpr double RingWidth = 7;

UsageRings::UsageRings(SystemMonitor& monitor, QWidget* parent) : QWidget(parent), monitor_(monitor)
{
    setObjectName(QStringLiteral("usageRings"));
    setMinimumHeight(84);
    connect(&monitor_, &SystemMonitor::changed, this, qOverload<>(&QWidget::update));
}

void UsageRings::drawRing(QPainter& painter, const QRectF& box, double fraction, const QColor& color, const QString& value,
                          const QString& label)
{
    const double side = std::min(box.width(), box.height());
    const QRectF ring(box.left(), box.center().y() - side / 2, side, side);
    const QRectF arc = ring.adjusted(RingWidth / 2, RingWidth / 2, -RingWidth / 2, -RingWidth / 2);
    QColor track = palette().color(QPalette::WindowText);
    track.setAlphaF(0.12);
    painter.setPen(QPen(track, RingWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawEllipse(arc);
    painter.setPen(QPen(color, RingWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(arc, 90 * 16, -int(std::clamp(fraction, 0.0, 1.0) * 360 * 16));

    painter.setPen(palette().color(QPalette::WindowText));
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(ring, Qt::AlignCenter, value);
    painter.setFont(font());
    const QRectF text(ring.right() + 8, box.top(), box.right() - ring.right() - 8, box.height());
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap, label);
}

void UsageRings::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(2, 6, -2, -6);
    const QRectF left(area.left(), area.top(), area.width() / 2 - 4, area.height());
    const QRectF right(area.center().x() + 4, area.top(), area.width() / 2 - 4, area.height());
    const bool known = monitor_.hasSample();
    const double cpu = monitor_.cpu() / 100.0;
    const double memory = monitor_.memoryTotal() ? double(monitor_.memoryUsed()) / double(monitor_.memoryTotal()) : 0;
    const QColor cpuColor = cpu >= 0.8 ? QColor(0xE0, 0x6C, 0x3C) : QColor(0x3B, 0x82, 0xF6);
    const QColor memoryColor = monitor_.pressure() >= 4 ? QColor(0xC0, 0x39, 0x2B)
                               : monitor_.pressure() >= 2 ? QColor(0xD6, 0x89, 0x10) : QColor(0x22, 0xA0, 0x6B);
    drawRing(painter, left, known ? cpu : 0, cpuColor, known ? QStringLiteral("%1%").arg(qRound(cpu * 100)) : QStringLiteral("–"),
             tr("CPU"));
    drawRing(painter, right, known ? memory : 0, memoryColor,
             known ? QStringLiteral("%1%").arg(qRound(memory * 100)) : QStringLiteral("–"),
             known ? tr("Memory\n%1").arg(byteCount(monitor_.memoryUsed())) : tr("Memory"));
}

}  // namespace orlo
