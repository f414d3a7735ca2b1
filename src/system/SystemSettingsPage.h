#pragma once
#include <QWidget>

class QTabWidget;

namespace orlo {

class SystemModule;

// The system tools' page in the settings window: "Monitor", "Disk", "Displays", "Keyboard".
class SystemSettingsPage : public QWidget {
    Q_OBJECT
public:
    explicit SystemSettingsPage(SystemModule& module, QWidget* parent = nullptr);
    QTabWidget* tabs() const { return tabs_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QTabWidget* tabs_;
};

}  // namespace orlo
