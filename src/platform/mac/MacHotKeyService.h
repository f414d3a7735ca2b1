#pragma once
#include "platform/HotKeyService.h"
#include <QHash>

namespace orlo::mac {

// System-wide hot keys through the Carbon event manager (RegisterEventHotKey). A Carbon hot
// key takes nothing else from the keyboard, so pressedWhileHeld never fires here; and the
// system does not tell whether another application registered the same keys.
class MacHotKeyService : public HotKeyService {
    Q_OBJECT
public:
    explicit MacHotKeyService(QObject* parent = nullptr);
    ~MacHotKeyService() override;

    bool registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers) override;
    void unregisterHotKey(quint32 id) override;

    // Called by the Carbon event handler for each hot-key press.
    void dispatch(quint32 id);

private:
    void* handler_ = nullptr;        // EventHandlerRef
    QHash<quint32, void*> refs_;     // id -> EventHotKeyRef
};

}  // namespace orlo::mac
