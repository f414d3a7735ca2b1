#pragma once
#include "input/HotKeys.h"
#include <QWidget>

class QLabel;
class QPushButton;

namespace orlo {

class KeyboardLayout;

// What a settings page shows while another program, usually the window manager, keeps some
// of the page's shortcuts: two ways out, one click each. "Use Free Keys" switches to keys
// the page has found free, when it has; "Copy Commands" copies the command lines of the taken
// shortcuts, to bind in the window manager's own keyboard settings instead.
class TakenKeysBox : public QWidget {
    Q_OBJECT
public:
    TakenKeysBox(HotKeys& hotKeys, QString page, KeyboardLayout& layout, QWidget* parent = nullptr);

    // The keys that "Use Free Keys" switches to, as the user reads them; empty when none are free.
    void setFreeKeys(const QString& description);
    // One sentence on where the lines go, then "Control+Alt+Left: orlo snap left-half", one
    // line per shortcut; where the compositor binds keys only in its configuration, the lines
    // of that file ("bindsym Ctrl+Mod1+Left exec orlo snap left-half").
    static QString commandsText(const QList<HotKeys::Taken>& taken, const HotKeys& hotKeys, KeyboardLayout& layout);

signals:
    void useFreeKeysClicked();

private:
    static QStringList bindingLines(const QList<HotKeys::Taken>& taken, const HotKeys& hotKeys);
    QList<HotKeys::Taken> taken() const;
    void refresh();
    void copyCommands();

    HotKeys& hotKeys_;
    QString page_;
    KeyboardLayout& layout_;
    QString freeKeys_;
    QLabel* text_;
    QLabel* lines_;
    QPushButton* useFreeKeys_;
    QPushButton* copyCommands_;
    QLabel* copied_;
};

}  // namespace orlo
