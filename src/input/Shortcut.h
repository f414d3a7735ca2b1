#pragma once
#include "platform/Keys.h"
#include <QByteArray>
#include <QString>
#include <optional>

namespace orlo {

class KeyboardLayout;

// One key plus modifier flags, as the user binds it to an action.
struct Shortcut {
    quint32 keyCode = 0;
    quint64 modifiers = 0;  // ModifierFlag bits; other bits are kept but ignored

    bool operator==(const Shortcut&) const = default;

    // How shortcuts are written: macOS glyphs ("⌃⌥←", "⇧⌘V"), or the words Linux desktops
    // use, joined by "+" ("Ctrl+Alt+←", "Super+Shift+V"), or the key names of window
    // managers' keyboard settings, plain text to type in ("Control+Alt+Left").
    enum class LabelStyle { Glyphs, Words, Names };
#ifdef Q_OS_MACOS
    static constexpr LabelStyle NativeStyle = LabelStyle::Glyphs;
#else
    static constexpr LabelStyle NativeStyle = LabelStyle::Words;
#endif

    // The one way Orlo shows a shortcut.
    QString label(KeyboardLayout& layout, LabelStyle style = NativeStyle) const;
    quint32 carbonModifiers() const;
    KeyCombo combo() const { return {keyCode, modifiers & ModifierFlag::ShortcutMask}; }
    static QString keyName(quint32 keyCode, KeyboardLayout& layout, LabelStyle style = NativeStyle);
    // The keystroke that pastes in other applications (Command-V; Control-V on Linux).
    static Shortcut paste();

    // JSON object with the keys "keyCode" and "modifiers", both required unsigned numbers.
    QByteArray toJson() const;
    static std::optional<Shortcut> fromJson(const QByteArray& json);
};

}  // namespace orlo
