#pragma once
#include <QObject>
#include <QRect>

class QWidget;

namespace orlo {

// Shows one of Orlo's views above every window, full-screen ones included, while it is open
// (the switcher's display). The view stays an ordinary Qt widget whatever shows it: it gets
// its input as Qt events (the keys through its window, where the key taps see them; clicks
// and the wheel; WindowActivate and WindowDeactivate as it gains and loses the keyboard) and
// asks to be drawn again with QWidget::update().
class Overlay : public QObject {
    Q_OBJECT
public:
    ~Overlay() override = default;
    // Shows the view at a place in window-system coordinates (Qt's), or moves and resizes it
    // there when it is shown already. Where the view's window takes the focus, the view gets
    // the keyboard for as long as it is shown.
    virtual void show(QWidget& view, const QRect& geometry) = 0;
    // Takes the view down and gives the keyboard back; nothing when nothing is shown.
    virtual void hide() = 0;
    virtual bool isVisible() const = 0;
    // Where the view stands, in window-system coordinates; empty while it was never shown.
    virtual QRect geometry() const = 0;

signals:
    // The system took the view down by itself (the compositor closed it, the connection to it
    // was lost): it is hidden now and the keyboard is back with the other windows.
    void closed();
};

}  // namespace orlo
