#pragma once
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QStackedWidget;

namespace orlo {

// The picker's floating window: a search field over the list of rows, the text of an empty
// history, and the hint about pasting without the Accessibility permission. It closes itself
// (emits deactivated) on a click elsewhere, or where it takes the focus, when it loses it.
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
    // Takes the keyboard and pointer again, as after a menu of the panel's own has closed.
    void holdKeyboard();

signals:
    void activated();
    void deactivated();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    // How long it tries to take the keyboard, and how often: a key typed in between still
    // goes to the window behind, so the tries follow each other closely.
    static constexpr int HoldForMs = 1000;
    static constexpr int HoldRetryMs = 2;
    void tryToHoldKeyboard();

    QTimer holdKeyboard_;
    QElapsedTimer holdClock_;
    bool holdingKeyboard_ = false;
    QLineEdit* search_;
    QListView* list_;
    QLabel* empty_;
    QLabel* hint_;
    QStackedWidget* stack_;
};

}  // namespace orlo
