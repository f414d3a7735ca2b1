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

    // Glyphs ⌃⌥⇧⌘ in that order, then the key name, e.g. "⌃⌥←" or "⇧⌘V".
    QString label(KeyboardLayout& layout) const;
    quint32 carbonModifiers() const;
    KeyCombo combo() const { return {keyCode, modifiers & ModifierFlag::ShortcutMask}; }
    static QString keyName(quint32 keyCode, KeyboardLayout& layout);

    // JSON object with the keys "keyCode" and "modifiers", both required unsigned numbers.
    QByteArray toJson() const;
    static std::optional<Shortcut> fromJson(const QByteArray& json);
};

}  // namespace orlo
