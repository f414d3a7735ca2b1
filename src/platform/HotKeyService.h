#pragma once
#include "platform/Keys.h"
#include <QObject>

namespace orlo {

// System-wide hot keys by id. A press of a registered combination emits pressed(id),
// whatever the state of Caps Lock and Num Lock.
class HotKeyService : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // carbonModifiers: command 0x100, shift 0x200, option 0x800, control 0x1000.
    virtual bool registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers) = 0;
    virtual void unregisterHotKey(quint32 id) = 0;
    // Whether another application holds the combination in a way that a registration is not
    // told about, so that its presses would never arrive. A refused registration needs no
    // such question; combinations Orlo holds itself are never held by another application.
    virtual bool isHeldByAnotherApp(quint32 keyCode, quint32 carbonModifiers)
    {
        Q_UNUSED(keyCode);
        Q_UNUSED(carbonModifiers);
        return false;
    }
    // Where no program may hold hot keys, but the compositor binds keys to commands in its own
    // configuration: that file as the user finds it ("~/.config/sway/config"); empty elsewhere.
    virtual QString bindingsFile() const { return {}; }
    // The line of that file that binds the combination to a command line; empty where there is
    // no such file or the key has no name there.
    virtual QString bindingLine(quint32 keyCode, quint32 carbonModifiers, const QString& command)
    {
        Q_UNUSED(keyCode);
        Q_UNUSED(carbonModifiers);
        Q_UNUSED(command);
        return {};
    }
signals:
    void pressed(quint32 id);
    // A key pressed while the keys of hot key `id` were still held down, which the hot key's
    // hold on the keyboard kept from every window (fast typing rolls over into the shortcut):
    // its key code, the modifier flags held with it and its text.
    void pressedWhileHeld(quint32 id, const orlo::KeyEvent& key);
};

}  // namespace orlo
