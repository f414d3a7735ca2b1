#pragma once
#include <QStringList>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace orlo {

class SwitcherModule;
class ToggleSwitch;
class Workspace;

// The switcher's page in the settings window.
class SwitcherSettingsView : public QWidget {
    Q_OBJECT
public:
    SwitcherSettingsView(SwitcherModule& module, Workspace& workspace, QWidget* parent = nullptr);

private:
    QWidget* shortcutSection();
    QWidget* windowsSection();
    QWidget* tabsSection();
    QWidget* excludedSection();
    void refresh();

    SwitcherModule& module_;
    Workspace& workspace_;
    QComboBox* trigger_ = nullptr;
    QLabel* triggerNote_ = nullptr;
    QLabel* refused_ = nullptr;
    ToggleSwitch* minimized_ = nullptr;
    QComboBox* layout_ = nullptr;
    ToggleSwitch* tabs_ = nullptr;
    QLabel* denied_ = nullptr;
    QPushButton* openAutomation_ = nullptr;
};

}  // namespace orlo
