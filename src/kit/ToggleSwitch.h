#pragma once
#include <QAbstractButton>

namespace orlo {

// An on/off switch. Space toggles it when it has the keyboard focus.
class ToggleSwitch : public QAbstractButton {
    Q_OBJECT
public:
    explicit ToggleSwitch(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {38, 22}; }
    // Shows a value without emitting toggled().
    void show(bool on);

protected:
    void paintEvent(QPaintEvent*) override;
};

}  // namespace orlo
