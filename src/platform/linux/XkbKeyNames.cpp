#include "platform/linux/XkbKeyNames.h"
#include "platform/linux/QtKeys.h"
#include <QHash>
#include <QKeySequence>
#include <xkbcommon/xkbcommon.h>

namespace orlo {

namespace {
xkb_keysym_t keysymOf(Qt::Key key)
{
    // A key that types a character (Qt names it by the upper case) is the keysym of the lower case.
    if (key >= 0x20 && key <= 0xff) return xkb_utf32_to_keysym(QChar(key).toLower().unicode());
    QString name = QKeySequence(key).toString(QKeySequence::PortableText);
    // Qt's short names for the keys whose XKB names differ.
    static const QHash<QString, QString> renamed{{QStringLiteral("Esc"), QStringLiteral("Escape")},
                                                 {QStringLiteral("PgUp"), QStringLiteral("Prior")},
                                                 {QStringLiteral("PgDown"), QStringLiteral("Next")},
                                                 {QStringLiteral("Del"), QStringLiteral("Delete")}};
    name = renamed.value(name, name);
    return xkb_keysym_from_name(qPrintable(name), XKB_KEYSYM_CASE_INSENSITIVE);
}
}  // namespace

std::optional<QString> xkbShortcutText(quint32 keyCode, quint32 carbonModifiers, KeyboardLayout& layout,
                                       const ModifierNames& names)
{
    const auto combined = qtKeyCombination(keyCode, carbonModifiers, layout);
    if (!combined) return std::nullopt;
    const xkb_keysym_t keysym = keysymOf(QKeyCombination::fromCombined(*combined).key());
    char keyName[64];
    if (keysym == XKB_KEY_NoSymbol || xkb_keysym_get_name(keysym, keyName, sizeof keyName) <= 0) return std::nullopt;
    QStringList parts;
    if (carbonModifiers & HotKeyModifier::Control) parts << names.control;
    if (carbonModifiers & HotKeyModifier::Option) parts << names.option;
    if (carbonModifiers & HotKeyModifier::Shift) parts << names.shift;
    if (carbonModifiers & HotKeyModifier::Command) parts << names.command;
    parts << QString::fromLatin1(keyName);
    return parts.join(QLatin1Char('+'));
}

}  // namespace orlo
