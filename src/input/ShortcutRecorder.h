#pragma once
#include "input/KeyCapture.h"
#include "input/Shortcut.h"
#include <QWidget>
#include <variant>

class QPushButton;

namespace orlo {

class KeyboardLayout;

// The settings control that records a new global shortcut: a button showing the current
// shortcut that, once clicked, takes the next key press; and a "Reset" link.
class ShortcutRecorder : public QWidget {
    Q_OBJECT
public:
    struct Cancel {};
    struct Beep {};
    using Outcome = std::variant<Cancel, Beep, Shortcut>;
    // What a key press does while recording.
    static Outcome decide(quint32 keyCode, quint64 flags);

    ShortcutRecorder(KeyboardLayout& layout, Shortcut current, Shortcut defaultShortcut,
                     QWidget* parent = nullptr);

    Shortcut shortcut() const { return shortcut_; }
    void setShortcut(const Shortcut& shortcut);
    bool isRecording() const { return capture_.isActive(); }
    void startRecording();
    void stopRecording();

signals:
    void shortcutChanged(const orlo::Shortcut& shortcut);

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    void takeKey(const KeyEvent& key);

    KeyboardLayout& layout_;
    Shortcut shortcut_;
    Shortcut default_;
    KeyCapture capture_;
    QPushButton* button_;
};

}  // namespace orlo
