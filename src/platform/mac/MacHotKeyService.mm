#include "platform/mac/MacHotKeyService.h"
#import <Carbon/Carbon.h>

// No Core Foundation objects here: Carbon's handler and hot-key references are released by
// RemoveEventHandler and UnregisterEventHotKey.
namespace orlo::mac {

namespace {
constexpr OSType Signature = 0x4F524C4F;  // 'ORLO'

// Runs on the main thread: the application event target dispatches from the main run loop.
OSStatus onHotKey(EventHandlerCallRef, EventRef event, void* userData)
{
    EventHotKeyID hotKey{};
    if (GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr, sizeof hotKey, nullptr, &hotKey) == noErr)
        static_cast<MacHotKeyService*>(userData)->dispatch(hotKey.id);
    // The press is Orlo's whether or not the id is still registered.
    return noErr;
}
}  // namespace

MacHotKeyService::MacHotKeyService(QObject* parent) : HotKeyService(parent)
{
    const EventTypeSpec pressed{kEventClassKeyboard, kEventHotKeyPressed};
    EventHandlerRef handler = nullptr;
    if (InstallEventHandler(GetApplicationEventTarget(), NewEventHandlerUPP(onHotKey), 1, &pressed, this, &handler) == noErr)
        handler_ = handler;
}

MacHotKeyService::~MacHotKeyService()
{
    for (void* ref : std::as_const(refs_)) UnregisterEventHotKey(static_cast<EventHotKeyRef>(ref));
    if (handler_) RemoveEventHandler(static_cast<EventHandlerRef>(handler_));
}

bool MacHotKeyService::registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers)
{
    if (!handler_ || refs_.contains(id)) return false;
    EventHotKeyRef ref = nullptr;
    const EventHotKeyID hotKey{Signature, id};
    if (RegisterEventHotKey(keyCode, carbonModifiers, hotKey, GetApplicationEventTarget(), 0, &ref) != noErr || !ref) return false;
    refs_.insert(id, ref);
    return true;
}

void MacHotKeyService::unregisterHotKey(quint32 id)
{
    if (void* ref = refs_.take(id)) UnregisterEventHotKey(static_cast<EventHotKeyRef>(ref));
}

void MacHotKeyService::dispatch(quint32 id)
{
    if (refs_.contains(id)) emit pressed(id);
}

}  // namespace orlo::mac
