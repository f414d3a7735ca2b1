#pragma once
#include <QWidget>

class QLabel;

namespace orlo {

class AppListEditor;
class ClipboardSettings;
class ClipboardStore;
class HotKeys;
class KeyboardLayout;
class Workspace;

// The clipboard history's page in the settings window.
class ClipboardSettingsPage : public QWidget {
    Q_OBJECT
public:
    ClipboardSettingsPage(ClipboardSettings& settings, ClipboardStore& store, KeyboardLayout& layout,
                          Workspace& workspace, HotKeys& hotKeys, QWidget* parent = nullptr);

private:
    QWidget* historyGroup();
    QWidget* pasteGroup();
    QWidget* excludedGroup();
    void refreshStatus();
    void refreshPaste();
    void refreshExcluded();
    void confirmClear();

    ClipboardSettings& settings_;
    ClipboardStore& store_;
    KeyboardLayout& layout_;
    Workspace& workspace_;
    HotKeys& hotKeys_;
    QLabel* status_ = nullptr;
    QLabel* pasteExplanation_ = nullptr;
    AppListEditor* excluded_ = nullptr;
};

}  // namespace orlo
