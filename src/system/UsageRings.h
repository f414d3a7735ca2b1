#pragma once
#include <QWidget>

namespace orlo {

class SystemMonitor;

// The panel's two rings: the machine's CPU and memory in use, filled by the system monitor.
class UsageRings : public QWidget {
    Q_OBJECT
public:
    explicit UsageRings(SystemMonitor& monitor, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {260, 84}; }

protected:
    void paintEvent(QPaintEvent*) override;

private:
    void drawRing(QPainter& painter, const QRectF& box, double fraction, const QColor& color, const QString& value,
                  const QString& label);

    SystemMonitor& monitor_;
};

}  // namespace orlo
