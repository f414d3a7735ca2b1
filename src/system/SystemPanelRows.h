#pragma once
#include <QWidget>

class QVBoxLayout;

namespace orlo {

class SystemModule;
class ToggleSwitch;

// The system tools' rows of the panel: usage rings, "Display Brightness", "Keyboard
// Cleaning" and "Prevent Sleep". The rings and the brightness slider show while the module
// runs; the two switches work whether it runs or not.
class SystemPanelRows : public QWidget {
    Q_OBJECT
public:
    explicit SystemPanelRows(SystemModule& module, QWidget* parent = nullptr);
    ~SystemPanelRows() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void rebuildBrightness();
    void refresh();
    ToggleSwitch* switchRow(QVBoxLayout* column, const QString& title, const QString& name);

    SystemModule& module_;
    QWidget* rings_;
    QWidget* brightness_;
    QVBoxLayout* brightnessRow_;
    QWidget* brightnessSlider_ = nullptr;
    ToggleSwitch* cleaning_;
    ToggleSwitch* preventSleep_;
    bool viewing_ = false;
};

}  // namespace orlo
