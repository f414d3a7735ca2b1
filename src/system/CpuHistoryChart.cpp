#include "system/CpuHistoryChart.h"
#include "system/SystemMonitor.h"
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

namespace orlo {

static constexpr int SamplesAcross = SystemMonitor::HistorySeconds * 1000 / SystemMonitor::WatchedIntervalMs;

CpuHistoryChart::CpuHistoryChart(SystemMonitor& monitor, QWidget* parent) : QWidget(parent), monitor_(monitor)
{
    setObjectName(QStringLiteral("cpuChart"));
    setMinimumHeight(110);
    setMouseTracking(true);
    connect(&monitor_, &SystemMonitor::changed, this, qOverload<>(&QWidget::update));
}

// Bars stand where their time falls in the last five minutes, newest at the right edge.
QRectF CpuHistoryChart::barRect(int index, qint64 newestMs) const
{
    const UsageSample& sample = monitor_.history()[index];
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    const double width = std::max(2.0, area.width() / SamplesAcross);
    const double age = double(newestMs - sample.date.toMSecsSinceEpoch()) / (SystemMonitor::HistorySeconds * 1000.0);
    const double right = area.right() - age * (area.width() - width);
    const double height = std::clamp(sample.cpu, 0.0, 100.0) / 100.0 * area.height();
    return QRectF(right - width, area.bottom() - std::max(height, 1.0), width - 1, std::max(height, 1.0));
}

const UsageSample* CpuHistoryChart::sampleAt(const QPoint& point) const
{
    const auto& history = monitor_.history();
    if (history.isEmpty()) return nullptr;
    const qint64 newest = history.last().date.toMSecsSinceEpoch();
    for (int i = int(history.size()) - 1; i >= 0; --i) {
        const QRectF bar = barRect(i, newest);
        if (point.x() >= bar.left() && point.x() <= bar.right() + 1) return &history[i];
    }
    return nullptr;
}

QString CpuHistoryChart::describe(const UsageSample& sample)
{
    QStringList lines{tr("%1 — CPU %2 %").arg(sample.date.toString(QStringLiteral("HH:mm:ss"))).arg(sample.cpu, 0, 'f', 0)};
    for (const AppUsage& app : sample.top) lines << tr("%1: %2 %").arg(app.name).arg(app.cpu, 0, 'f', 1);
    return lines.join(QLatin1Char('\n'));
}

void CpuHistoryChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor base = palette().color(QPalette::Base);
    const QColor line = palette().color(QPalette::Mid);
    painter.setPen(line);
    painter.setBrush(base);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    painter.setPen(QPen(line, 1, Qt::DotLine));
    for (int percent : {25, 50, 75}) {
        const double y = height() - 1 - percent / 100.0 * (height() - 2);
        painter.drawLine(QPointF(1, y), QPointF(width() - 1, y));
    }
    const auto& history = monitor_.history();
    if (history.isEmpty()) return;
    const qint64 newest = history.last().date.toMSecsSinceEpoch();
    painter.setPen(Qt::NoPen);
    const QColor bar = palette().color(QPalette::Highlight);
    for (int i = 0; i < history.size(); ++i) {
        painter.setBrush(history[i].cpu >= 80 ? QColor(0xE0, 0x6C, 0x3C) : bar);
        painter.drawRect(barRect(i, newest));
    }
}

void CpuHistoryChart::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (const UsageSample* sample = sampleAt(at)) QToolTip::showText(event->globalPosition().toPoint(), describe(*sample), this);
    else QToolTip::hideText();
}

}  // namespace orlo
