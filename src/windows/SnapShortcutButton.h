#pragma once
#include "windows/SnapAction.h"
#include <QPushButton>

namespace orlo {

class KeyboardLayout;
class SnapSettings;

// The shortcut of one snap action on the settings page. Clicking it records a new one
// through the settings; clicking again while recording stops without a change.
class SnapShortcutButton : public QPushButton {
    Q_OBJECT
public:
    SnapShortcutButton(SnapSettings& settings, SnapAction action, KeyboardLayout& layout, QWidget* parent = nullptr);
    SnapAction action() const { return action_; }

private:
    void refresh();

    SnapSettings& settings_;
    SnapAction action_;
    KeyboardLayout& layout_;
};

}  // namespace orlo
