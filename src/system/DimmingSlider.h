#pragma once
#include "platform/Gamma.h"
#include <QTimer>
#include <QWidget>
#include <optional>

class QSlider;

namespace orlo {

class DisplayDimmer;

// One display's level between the symbols "moon" and "sun.max", from 15 % to 100 %. A drag
// sets the level at most once a frame: the first move at once, the latest one a frame later.
class DimmingSlider : public QWidget {
    Q_OBJECT
public:
    DimmingSlider(DisplayDimmer& dimmer, const GammaDisplay& display, QWidget* parent = nullptr);
    QSlider* slider() const { return slider_; }

private:
    void showLevel();
    void onMoved(int value);
    void setPendingLevel();

    DisplayDimmer& dimmer_;
    GammaDisplay display_;
    QSlider* slider_;
    QTimer frame_;
    std::optional<int> pending_;
};

}  // namespace orlo
