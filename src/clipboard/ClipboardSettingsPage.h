#pragma once
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace orlo {

class ClipboardSettings;
class ClipboardStore;
class KeyboardLayout;
class Workspace;

// The clipboard history's page in the settings window.
class ClipboardSettingsPage : public QWidget {
    Q_OBJECT
public:
    ClipboardSettingsPage(ClipboardSettings& settings, ClipboardStore& store, KeyboardLayout& layout,
                          Workspace& workspace, QWidget* parent = nullptr);

    // Adds the applications of these files of the applications folder; ones already listed are skipped.
    void addApplications(const QStringList& paths);

private:
    QWidget* historyGroup();
    QWidget* pasteGroup();
    QWidget* excludedGroup();
    void refreshStatus();
    void refreshPaste();
    void refreshExcluded();
    void chooseApplications();
    void confirmClear();

    ClipboardSettings& settings_;
    ClipboardStore& store_;
    KeyboardLayout& layout_;
    Workspace& workspace_;
    QLabel* status_ = nullptr;
    QLabel* pasteExplanation_ = nullptr;
    QVBoxLayout* excludedRows_ = nullptr;
};

}  // namespace orlo
