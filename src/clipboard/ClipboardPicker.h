#pragma once
#include "clipboard/ClipItem.h"
#include "clipboard/PickerModel.h"
#include "platform/Keys.h"
#include "platform/Screens.h"
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

class QKeyEvent;

namespace orlo {

class ClipboardStore;
class ClipRow;
class KeyboardLayout;
class PickerPanel;
class Workspace;

// The floating panel that the clipboard shortcut opens near the pointer: search, choose
// with the keyboard, pin and delete. Choosing hands the item to onPaste.
class ClipboardPicker : public QObject {
    Q_OBJECT
public:
    // Key codes of the digits 1 to 9: the top row, then the keypad.
    static std::optional<int> digit(quint32 keyCode);

    struct Ports {
        KeyboardLayout& layout;
        Screens& screens;
        Workspace& workspace;
    };
    ClipboardPicker(ClipboardStore& store, Ports ports, QObject* parent = nullptr);
    ~ClipboardPicker() override;

    // item, plain text
    std::function<void(const ClipItem&, bool)> onPaste;
    // Whether to show the hint that pasting needs the Accessibility permission.
    std::function<bool()> needsAccessibilityHint;
    // The shortcut that opens the picker. The open picker holds the keyboard, so the shortcut
    // reaches the picker itself, and closes it.
    std::optional<KeyCombo> shortcut;

    void show();
    // Builds the panel ahead of its first showing, so that the first opening is as quick as the next.
    void prepare();
    void close();
    bool isVisible() const;
    PickerModel& model() { return model_; }
    PickerPanel* panel() const;

    // What a key press does while the picker is open; true when the picker used it.
    bool handleKey(QKeyEvent* event);
    bool handleKey(const KeyEvent& key);
    // A key typed while the shortcut's own keys were still held, which no window saw: it does
    // what it would have done in the open picker, a character going into the search.
    void typeWhileOpening(const KeyEvent& key);

    // The panel's top-left corner for a pointer position, both in window-system coordinates:
    // hanging below and right of the pointer, kept 8 points inside the visible frame of the
    // pointer's screen. Screens are in screen coordinates (y up), primary first;
    // primaryGeometry is the primary screen in window-system coordinates.
    static QPoint placement(QPointF pointer, const QList<ScreenInfo>& screens, const QRectF& primaryGeometry);

signals:
    void shown();
    void closed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makePanel();
    void choose(int row, bool plainText);
    void showMenu(const QPoint& at);
    void syncSelection(int row);
    void refreshEmptyText();

    ClipboardStore& store_;
    Ports ports_;
    PickerModel model_;
    std::unique_ptr<PickerPanel> panel_;
    ClipRow* rows_ = nullptr;
    bool open_ = false;
};

}  // namespace orlo
