#pragma once
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QStackedWidget;

namespace orlo {

// The picker's floating window: a search field over the list of rows, the text of an empty
// history, and the hint about pasting without the Accessibility permission. It closes itself
// (emits deactivated) when it stops being the active window.
class PickerPanel : public QWidget {
    Q_OBJECT
public:
    static constexpr int Width = 420;
    static constexpr int Height = 480;

    explicit PickerPanel(QWidget* parent = nullptr);

    QLineEdit* searchField() const { return search_; }
    QListView* list() const { return list_; }
    void showEmptyHistory(bool empty);
    void showAccessibilityHint(bool show);

signals:
    void deactivated();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLineEdit* search_;
    QListView* list_;
    QLabel* empty_;
    QLabel* hint_;
    QStackedWidget* stack_;
};

}  // namespace orlo
