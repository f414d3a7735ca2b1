#pragma once
#include "platform/Keys.h"
#include <QObject>
#include <QString>
#include <optional>

class QKeyEvent;

namespace orlo {

class KeyboardLayout : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // The character a key produces in the current layout without modifiers, if any.
    virtual std::optional<QString> character(quint32 keyCode) = 0;
    // The character a key types with these modifier flags; only Shift and Caps Lock count.
    virtual std::optional<QString> typedCharacter(quint32 keyCode, quint64 modifierFlags)
    {
        auto text = character(keyCode);
        if (text && (modifierFlags & (ModifierFlag::Shift | ModifierFlag::CapsLock))) *text = text->toUpper();
        return text;
    }
    // The canonical key code and modifier flags of a key event delivered to one of Orlo's windows.
    virtual std::optional<KeyEvent> keyEvent(const QKeyEvent& event) = 0;

signals:
    // The keys produce other characters now (another layout, or another group of it): every
    // shortcut shown to the user is to be named again.
    void changed();
};

}  // namespace orlo
