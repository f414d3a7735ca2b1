#pragma once
#include <QString>
#include <QtGlobal>

namespace orlo {

// Device-independent modifier flags of a key event, the same values on every platform.
namespace ModifierFlag {
constexpr quint64 CapsLock = 0x10000;
constexpr quint64 Shift = 0x20000;
constexpr quint64 Control = 0x40000;
constexpr quint64 Option = 0x80000;
constexpr quint64 Command = 0x100000;
constexpr quint64 NumericPad = 0x200000;
constexpr quint64 Function = 0x800000;
constexpr quint64 ShortcutMask = Shift | Control | Option | Command;
}  // namespace ModifierFlag

// The modifiers of a hot key as the hot key services take them (Carbon's values).
namespace HotKeyModifier {
constexpr quint32 Command = 0x100;
constexpr quint32 Shift = 0x200;
constexpr quint32 Option = 0x800;
constexpr quint32 Control = 0x1000;
}  // namespace HotKeyModifier

// Canonical key codes of the keys Orlo names in its code (the hardware virtual key numbering).
namespace KeyCode {
constexpr quint32 A = 0, V = 9, Return = 36, Tab = 48, Space = 49, Delete = 51, Escape = 53;
constexpr quint32 Command = 55, Shift = 56, CapsLock = 57, Option = 58, Control = 59;
constexpr quint32 RightCommand = 54, RightShift = 60, RightOption = 61, RightControl = 62;
constexpr quint32 LeftArrow = 123, RightArrow = 124, DownArrow = 125, UpArrow = 126;
// The modifier keys themselves (they report a flags change, not a key press).
constexpr bool isModifier(quint32 code) { return code >= RightCommand && code <= 63; }
// The flag a modifier key holds down, 0 for Caps Lock and every other key.
constexpr quint64 modifierFlag(quint32 code)
{
    switch (code) {
    case Shift: case RightShift: return ModifierFlag::Shift;
    case Control: case RightControl: return ModifierFlag::Control;
    case Option: case RightOption: return ModifierFlag::Option;
    case Command: case RightCommand: return ModifierFlag::Command;
    default: return 0;
    }
}
}  // namespace KeyCode

// Key event types, numbered like the system's event types; the two "disabled" types are
// notifications that a tap was switched off and are never part of an event mask.
enum class KeyEventType : quint32 {
    KeyDown = 10,
    KeyUp = 11,
    FlagsChanged = 12,
    // The media, volume and brightness keys, where the system reports them apart from other keys.
    SystemDefined = 14,
    TapDisabledByTimeout = 0xFFFFFFFE,
    TapDisabledByUserInput = 0xFFFFFFFF,
};

struct KeyEvent {
    KeyEventType type = KeyEventType::KeyDown;
    quint32 keyCode = 0;
    quint64 flags = 0;
    bool isRepeat = false;
    // What the key types with every modifier and lock in effect when it was pressed (Shift,
    // AltGr, Caps Lock, Num Lock), as the keyboard layout has it: "%" for Shift+5 on a US
    // layout, a whole emoji where a layout has one. Empty for keys that type nothing.
    QString text{};
};

// A key plus the shortcut modifiers that must be held with it.
struct KeyCombo {
    quint32 keyCode = 0;
    quint64 modifiers = 0;
    bool operator==(const KeyCombo&) const = default;
};

}  // namespace orlo
