#pragma once
#include "system/AppUsage.h"
#include <QWidget>

namespace orlo {

class SystemMonitor;

// Five minutes of machine CPU as bars; hovering a bar names the busiest applications then.
class CpuHistoryChart : public QWidget {
    Q_OBJECT
public:
    explicit CpuHistoryChart(SystemMonitor& monitor, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {480, 120}; }
    // The sample under a point of the chart, if any.
    const UsageSample* sampleAt(const QPoint& point) const;
    static QString describe(const UsageSample& sample);

protected:
    void paintEvent(QPaintEvent*) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    QRectF barRect(int index, qint64 newestMs) const;

    SystemMonitor& monitor_;
};

}  // namespace orlo
