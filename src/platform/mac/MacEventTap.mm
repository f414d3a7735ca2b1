#include "platform/mac/MacEventTap.h"
#include "platform/mac/MacCF.h"
#import <ApplicationServices/ApplicationServices.h>
#include <algorithm>

// Core Foundation ownership: the tap's Mach port and its run-loop source come from Create
// functions and are held in CFRefs.
namespace orlo::mac {

namespace {

// The flags every keyboard has; the low bits tell left from right keys, which Orlo ignores.
constexpr quint64 DeviceIndependentFlags = 0xFFFF0000;

class MacKeyTap : public KeyTap {
public:
    explicit MacKeyTap(EventTapBackend::Callback callback) : callback_(std::move(callback)) {}
    ~MacKeyTap() override
    {
        if (port_) {
            CGEventTapEnable(port_.get(), false);
            CFMachPortInvalidate(port_.get());
        }
        if (source_) CFRunLoopRemoveSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
    }

    bool create(quint64 mask)
    {
        // An active tap at the head of the session's taps: it may swallow what it sees.
        // Without the Accessibility permission the system refuses it.
        port_.reset(CGEventTapCreate(kCGSessionEventTap, kCGHeadInsertEventTap, kCGEventTapOptionDefault,
                                     CGEventMask(mask), &MacKeyTap::onEvent, this));
        if (!port_) return false;
        source_.reset(CFMachPortCreateRunLoopSource(kCFAllocatorDefault, port_.get(), 0));
        if (!source_) return false;
        // The common modes: keys arrive also while a menu tracks or a modal loop runs.
        CFRunLoopAddSource(CFRunLoopGetMain(), source_.get(), kCFRunLoopCommonModes);
        // Created enabled; enabled again by setEnabled(true).
        CGEventTapEnable(port_.get(), false);
        return true;
    }

    bool setEnabled(bool enabled) override
    {
        CGEventTapEnable(port_.get(), enabled);
        return !enabled || CGEventTapIsEnabled(port_.get());
    }
    void setWatchedKeys(const QList<KeyCombo>&) override {}
    bool setSeesAllKeys(bool) override { return true; }
    std::optional<quint64> modifierFlags() override
    {
        return quint64(CGEventSourceFlagsState(kCGEventSourceStateHIDSystemState)) & ModifierFlag::ShortcutMask;
    }
    // Both from a watchdog's thread: the HID state and the tap's switch are safe from any thread.
    std::optional<bool> isKeyDown(quint32 keyCode) override
    {
        return CGEventSourceKeyState(kCGEventSourceStateHIDSystemState, CGKeyCode(keyCode));
    }
    void releaseKeyboardNow() override { CGEventTapEnable(port_.get(), false); }

private:
    // On the main thread: the source is on the main run loop. The callback must be quick,
    // or the system disables the tap and every keystroke of the session waits meanwhile.
    static CGEventRef onEvent(CGEventTapProxy, CGEventType type, CGEventRef event, void* info)
    {
        auto* tap = static_cast<MacKeyTap*>(info);
        if (!tap) return event;
        KeyEvent key;
        if (type == kCGEventTapDisabledByTimeout || type == kCGEventTapDisabledByUserInput) {
            key.type = type == kCGEventTapDisabledByTimeout ? KeyEventType::TapDisabledByTimeout : KeyEventType::TapDisabledByUserInput;
            tap->callback_(key);
            return event;
        }
        key.type = KeyEventType(quint32(type));
        key.flags = quint64(CGEventGetFlags(event)) & DeviceIndependentFlags;
        if (type == kCGEventKeyDown || type == kCGEventKeyUp || type == kCGEventFlagsChanged) {
            key.keyCode = quint32(CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode));
            key.isRepeat = CGEventGetIntegerValueField(event, kCGKeyboardEventAutorepeat) != 0;
        }
        if (type == kCGEventKeyDown) {
            // What the key types, with every modifier and the input source in effect.
            UniChar text[8];
            UniCharCount length = 0;
            CGEventKeyboardGetUnicodeString(event, 8, &length, text);
            key.text = QString(reinterpret_cast<const QChar*>(text), qsizetype(std::min<UniCharCount>(length, 8)));
        }
        return tap->callback_(key) ? nullptr : event;
    }

    EventTapBackend::Callback callback_;
    CFRef<CFMachPortRef> port_;
    CFRef<CFRunLoopSourceRef> source_;
};

}  // namespace

std::unique_ptr<KeyTap> MacEventTapBackend::createTap(quint64 mask, Callback callback)
{
    auto tap = std::make_unique<MacKeyTap>(std::move(callback));
    if (!tap->create(mask)) return nullptr;
    return tap;
}

}  // namespace orlo::mac
