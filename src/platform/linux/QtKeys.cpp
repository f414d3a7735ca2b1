#include "platform/linux/QtKeys.h"
#include <QKeySequence>

namespace orlo {

namespace {
std::optional<Qt::Key> namedKey(quint32 keyCode)
{
    switch (keyCode) {
    case KeyCode::Return: return Qt::Key_Return;
    case KeyCode::Tab: return Qt::Key_Tab;
    case KeyCode::Space: return Qt::Key_Space;
    case KeyCode::Delete: return Qt::Key_Backspace;
    case KeyCode::Escape: return Qt::Key_Escape;
    case KeyCode::LeftArrow: return Qt::Key_Left;
    case KeyCode::RightArrow: return Qt::Key_Right;
    case KeyCode::DownArrow: return Qt::Key_Down;
    case KeyCode::UpArrow: return Qt::Key_Up;
    case 115: return Qt::Key_Home;
    case 119: return Qt::Key_End;
    case 116: return Qt::Key_PageUp;
    case 121: return Qt::Key_PageDown;
    case 117: return Qt::Key_Delete;
    case 122: return Qt::Key_F1;
    case 120: return Qt::Key_F2;
    case 99: return Qt::Key_F3;
    case 118: return Qt::Key_F4;
    case 96: return Qt::Key_F5;
    case 97: return Qt::Key_F6;
    case 98: return Qt::Key_F7;
    case 100: return Qt::Key_F8;
    case 101: return Qt::Key_F9;
    case 109: return Qt::Key_F10;
    case 103: return Qt::Key_F11;
    case 111: return Qt::Key_F12;
    default: return std::nullopt;
    }
}
}  // namespace

std::optional<int> qtKeyCombination(quint32 keyCode, quint32 carbonModifiers, KeyboardLayout& layout)
{
    std::optional<Qt::Key> key = namedKey(keyCode);
    if (!key) {
        // One character names its key: "A" is Qt::Key_A, "," Qt::Key_Comma.
        const auto character = layout.character(keyCode);
        if (!character || character->size() != 1) return std::nullopt;
        const QKeySequence sequence = QKeySequence::fromString(character->toUpper(), QKeySequence::PortableText);
        if (sequence.count() != 1 || sequence[0].keyboardModifiers() != Qt::NoModifier) return std::nullopt;
        key = sequence[0].key();
    }
    Qt::KeyboardModifiers modifiers;
    if (carbonModifiers & HotKeyModifier::Command) modifiers |= Qt::MetaModifier;
    if (carbonModifiers & HotKeyModifier::Shift) modifiers |= Qt::ShiftModifier;
    if (carbonModifiers & HotKeyModifier::Option) modifiers |= Qt::AltModifier;
    if (carbonModifiers & HotKeyModifier::Control) modifiers |= Qt::ControlModifier;
    return QKeyCombination(modifiers, *key).toCombined();
}

}  // namespace orlo
