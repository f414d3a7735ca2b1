#pragma once
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace orlo {

class DisplayDimmer;
class SystemModule;

// The "Displays" tab: one dimming slider per display and "Reset all displays".
class DisplaysTab : public QWidget {
    Q_OBJECT
public:
    explicit DisplaysTab(SystemModule& module, QWidget* parent = nullptr);

private:
    void rebuildSliders();
    void refreshHint();

    SystemModule& module_;
    DisplayDimmer& dimmer_;
    QLabel* hint_;
    QVBoxLayout* sliders_;
};

}  // namespace orlo
