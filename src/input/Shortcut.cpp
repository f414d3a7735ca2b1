#include "input/Shortcut.h"
#include "platform/KeyboardLayout.h"
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <limits>

namespace orlo {

QString Shortcut::label(KeyboardLayout& layout, LabelStyle style) const
{
    QString s;
    if (style == LabelStyle::Glyphs) {
        if (modifiers & ModifierFlag::Control) s += QChar(0x2303);
        if (modifiers & ModifierFlag::Option) s += QChar(0x2325);
        if (modifiers & ModifierFlag::Shift) s += QChar(0x21E7);
        if (modifiers & ModifierFlag::Command) s += QChar(0x2318);
        return s + keyName(keyCode, layout, style);
    }
    // Command is the Super key on Linux, and written first there, as in Super+Shift+V.
    if (modifiers & ModifierFlag::Command) s += QStringLiteral("Super+");
    if (modifiers & ModifierFlag::Control) s += style == LabelStyle::Names ? QStringLiteral("Control+") : QStringLiteral("Ctrl+");
    if (modifiers & ModifierFlag::Option) s += QStringLiteral("Alt+");
    if (modifiers & ModifierFlag::Shift) s += QStringLiteral("Shift+");
    return s + keyName(keyCode, layout, style);
}

Shortcut Shortcut::paste()
{
#ifdef Q_OS_MACOS
    return {KeyCode::V, ModifierFlag::Command};
#else
    return {KeyCode::V, ModifierFlag::Control};
#endif
}

quint32 Shortcut::carbonModifiers() const
{
    quint32 m = 0;
    if (modifiers & ModifierFlag::Command) m |= HotKeyModifier::Command;
    if (modifiers & ModifierFlag::Shift) m |= HotKeyModifier::Shift;
    if (modifiers & ModifierFlag::Option) m |= HotKeyModifier::Option;
    if (modifiers & ModifierFlag::Control) m |= HotKeyModifier::Control;
    return m;
}

QString Shortcut::keyName(quint32 keyCode, KeyboardLayout& layout, LabelStyle style)
{
    if (style == LabelStyle::Names) {
        switch (keyCode) {
        case KeyCode::Return: return QStringLiteral("Return");
        case KeyCode::Tab: return QStringLiteral("Tab");
        case KeyCode::Delete: return QStringLiteral("BackSpace");
        case KeyCode::Escape: return QStringLiteral("Escape");
        case KeyCode::LeftArrow: return QStringLiteral("Left");
        case KeyCode::RightArrow: return QStringLiteral("Right");
        case KeyCode::DownArrow: return QStringLiteral("Down");
        case KeyCode::UpArrow: return QStringLiteral("Up");
        default: break;
        }
    }
    if (style == LabelStyle::Words) {
        switch (keyCode) {
        case KeyCode::Return: return QStringLiteral("Enter");
        case KeyCode::Tab: return QStringLiteral("Tab");
        case KeyCode::Delete: return QStringLiteral("Backspace");
        case KeyCode::Escape: return QStringLiteral("Esc");
        default: break;
        }
    }
    switch (keyCode) {
    case KeyCode::Return: return QStringLiteral("↩");
    case KeyCode::Tab: return QStringLiteral("⇥");
    case KeyCode::Space: return QStringLiteral("Space");
    case KeyCode::Delete: return QStringLiteral("⌫");
    case KeyCode::Escape: return QStringLiteral("⎋");
    case KeyCode::LeftArrow: return QStringLiteral("←");
    case KeyCode::RightArrow: return QStringLiteral("→");
    case KeyCode::DownArrow: return QStringLiteral("↓");
    case KeyCode::UpArrow: return QStringLiteral("↑");
    default: break;
    }
    if (auto ch = layout.character(keyCode); ch && !ch->isEmpty()) return ch->toUpper();
    return QStringLiteral("#%1").arg(keyCode);
}

QByteArray Shortcut::toJson() const
{
    // JSON's integers end below 2^63. Flags beyond, which only a number read as a double can
    // hold, are written as that double, so that they read back the same.
    const bool large = modifiers > quint64(std::numeric_limits<qint64>::max());
    QJsonObject o{{"keyCode", qint64(keyCode)}, {"modifiers", large ? QJsonValue(double(modifiers)) : QJsonValue(qint64(modifiers))}};
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

static std::optional<quint64> unsignedField(const QJsonObject& o, const char* key, quint64 max)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isDouble()) return std::nullopt;
    const double d = v.toDouble();
    // max + 1 as a double: max itself may round up to it, as 2^64 - 1 does.
    if (d < 0 || d != std::floor(d) || d >= double(max) + 1) return std::nullopt;
    const qint64 i = v.toInteger(-1);
    return i < 0 ? std::optional<quint64>(quint64(d)) : std::optional<quint64>(quint64(i));
}

std::optional<Shortcut> Shortcut::fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) return std::nullopt;
    const auto key = unsignedField(doc.object(), "keyCode", 0xFFFFFFFFull);
    if (!key) return std::nullopt;
    const auto mods = unsignedField(doc.object(), "modifiers", ~0ull);
    if (!mods) return std::nullopt;
    return Shortcut{quint32(*key), *mods};
}

}  // namespace orlo
