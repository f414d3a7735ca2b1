#pragma once
#include <QStringList>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace orlo {

class HotKeys;
class KeyboardLayout;
class SwitcherModule;
class TakenKeysBox;
class ToggleSwitch;
class Workspace;

// The switcher's page in the settings window.
class SwitcherSettingsView : public QWidget {
    Q_OBJECT
public:
    SwitcherSettingsView(SwitcherModule& module, Workspace& workspace, HotKeys& hotKeys, KeyboardLayout& layout,
                         QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* shortcutSection(HotKeys& hotKeys, KeyboardLayout& layout);
    QWidget* windowsSection();
    QWidget* tabsSection();
    QWidget* excludedSection();
    void refresh();

    SwitcherModule& module_;
    Workspace& workspace_;
    HotKeys& hotKeys_;
    QComboBox* trigger_ = nullptr;
    QLabel* triggerNote_ = nullptr;
    QLabel* refused_ = nullptr;
    TakenKeysBox* taken_ = nullptr;
    ToggleSwitch* minimized_ = nullptr;
    QComboBox* layout_ = nullptr;
    ToggleSwitch* tabs_ = nullptr;
    QLabel* denied_ = nullptr;
    QPushButton* openAutomation_ = nullptr;
};

}  // namespace orlo
