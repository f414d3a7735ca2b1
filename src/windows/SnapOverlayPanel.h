#pragma once
#include <QRectF>
#include <QVariantAnimation>
#include <QWidget>

namespace orlo {

// The preview of drag-to-snap: a window over one whole screen that highlights the area the
// dragged window would take. It never takes the focus or the mouse. Where windows cannot be
// translucent, only the highlight's outline is shown, so the screen stays visible through it.
class SnapOverlayPanel : public QWidget {
    Q_OBJECT
public:
    explicit SnapOverlayPanel(bool translucent, QWidget* parent = nullptr);

    // Covers `screen` and highlights `rect`, both in top-left coordinates; qtOrigin is where
    // Qt has the screen's corner. A change of the highlight on a visible panel is animated.
    void highlight(const QRectF& rect, const QRectF& screen, const QPointF& qtOrigin);
    QRectF box() const { return box_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void setBox(const QRectF& box);

    bool translucent_;
    QRectF box_;
    QVariantAnimation animation_;
};

}  // namespace orlo
