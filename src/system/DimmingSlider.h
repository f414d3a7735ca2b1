#pragma once
#include "platform/Gamma.h"
#include <QWidget>

class QSlider;

namespace orlo {

class DisplayDimmer;

// One display's level between the symbols "moon" and "sun.max", from 15 % to 100 %.
class DimmingSlider : public QWidget {
    Q_OBJECT
public:
    DimmingSlider(DisplayDimmer& dimmer, const GammaDisplay& display, QWidget* parent = nullptr);
    QSlider* slider() const { return slider_; }

private:
    void showLevel();

    DisplayDimmer& dimmer_;
    GammaDisplay display_;
    QSlider* slider_;
};

}  // namespace orlo
