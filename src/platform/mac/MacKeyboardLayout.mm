#include "platform/mac/MacKeyboardLayout.h"
#include "platform/mac/MacCF.h"
#import <Carbon/Carbon.h>
#import <Foundation/Foundation.h>
#include <QKeyEvent>

// Core Foundation ownership: the input source from TISCopy... is held in a CFRef; the layout
// data from TISGetInputSourceProperty is borrowed from it and used while it is held.
namespace orlo::mac {

struct MacKeyboardLayout::Observer {
    id token = nil;
};

MacKeyboardLayout::MacKeyboardLayout(QObject* parent) : KeyboardLayout(parent), observer_(std::make_unique<Observer>())
{
    // The system posts this distributed notification on the main thread's run loop whenever
    // the user picks another keyboard layout or input source.
    observer_->token = [[NSDistributedNotificationCenter defaultCenter]
        addObserverForName:(__bridge NSString*)kTISNotifySelectedKeyboardInputSourceChanged
                    object:nil
                     queue:[NSOperationQueue mainQueue]
                usingBlock:^(NSNotification*) {
                  emit changed();
                }];
}

MacKeyboardLayout::~MacKeyboardLayout()
{
    if (observer_->token) [[NSDistributedNotificationCenter defaultCenter] removeObserver:observer_->token];
}

std::optional<QString> MacKeyboardLayout::translate(quint32 keyCode, quint32 carbonModifierState)
{
    // Text Input Sources are main-thread only; every caller (key taps, views) runs there.
    CFRef<TISInputSourceRef> source(TISCopyCurrentKeyboardLayoutInputSource());
    if (!source) return std::nullopt;
    const auto data = static_cast<CFDataRef>(TISGetInputSourceProperty(source.get(), kTISPropertyUnicodeKeyLayoutData));
    if (!data) return std::nullopt;  // an input method without a keyboard layout of its own
    const auto* layout = reinterpret_cast<const UCKeyboardLayout*>(CFDataGetBytePtr(data));
    UInt32 deadKeyState = 0;
    UniChar chars[4];
    UniCharCount length = 0;
    const OSStatus status = UCKeyTranslate(layout, UInt16(keyCode), kUCKeyActionDisplay, carbonModifierState, LMGetKbdType(),
                                           kUCKeyTranslateNoDeadKeysMask, &deadKeyState, 4, &length, chars);
    if (status != noErr || length == 0) return std::nullopt;
    return QString(reinterpret_cast<const QChar*>(chars), qsizetype(length));
}

std::optional<QString> MacKeyboardLayout::character(quint32 keyCode) { return translate(keyCode, 0); }

std::optional<KeyEvent> MacKeyboardLayout::keyEvent(const QKeyEvent& event)
{
    // Qt's Cocoa plugin hands on the NSEvent's keyCode as the native virtual key and its
    // modifierFlags as the native modifiers: the same numbering Orlo stores.
    if (event.type() != QEvent::KeyPress && event.type() != QEvent::KeyRelease) return std::nullopt;
    constexpr quint64 DeviceIndependentFlags = 0xFFFF0000;
    return KeyEvent{event.type() == QEvent::KeyPress ? KeyEventType::KeyDown : KeyEventType::KeyUp,
                    quint32(event.nativeVirtualKey()), quint64(event.nativeModifiers()) & DeviceIndependentFlags,
                    event.isAutoRepeat(), event.text()};
}

}  // namespace orlo::mac
