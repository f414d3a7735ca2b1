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
    // The character a key produces in the current layout without modifiers, if any: the
    // key's name in a shortcut. What a key types goes with its event (KeyEvent::text).
    virtual std::optional<QString> character(quint32 keyCode) = 0;
    // The canonical key code, modifier flags and text of a key event delivered to one of
    // Orlo's windows.
    virtual std::optional<KeyEvent> keyEvent(const QKeyEvent& event) = 0;

signals:
    // The keys produce other characters now (another layout, or another group of it): every
    // shortcut shown to the user is to be named again.
    void changed();
};

}  // namespace orlo
