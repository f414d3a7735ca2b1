#pragma once
#include "input/KeyCapture.h"
#include <QWidget>

namespace orlo {

class HotKeys;
class KeyboardLayout;
class WindowsModule;

// The windows module's settings page: the shortcut of every action, the gap, drag to snap,
// the reach of the grid and the cycling preset of each kind of screen.
class WindowsSettingsView : public QWidget {
    Q_OBJECT
public:
    WindowsSettingsView(WindowsModule& module, HotKeys& hotKeys, KeyboardLayout& layout, QWidget* parent = nullptr);

protected:
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* shortcutsSection(HotKeys& hotKeys);
    QWidget* gapSection();
    QWidget* dragSection();
    QWidget* gridSection();
    QWidget* presetsSection();
    void recordingChanged();

    WindowsModule& module_;
    KeyboardLayout& layout_;
    KeyCapture capture_;
};

}  // namespace orlo
