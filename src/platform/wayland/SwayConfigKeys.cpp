#include "platform/wayland/SwayConfigKeys.h"
#include "platform/linux/XkbKeyNames.h"
#include <QFileInfo>

namespace orlo::wayland {

bool SwayConfigKeys::offered()
{
    const QString socket = qEnvironmentVariable("SWAYSOCK");
    return !socket.isEmpty() && QFileInfo(socket).exists();
}

QString SwayConfigKeys::bindingLine(quint32 keyCode, quint32 carbonModifiers, const QString& command)
{
    static const ModifierNames sway{QStringLiteral("Ctrl"), QStringLiteral("Mod1"), QStringLiteral("Shift"),
                                    QStringLiteral("Mod4")};
    const auto keys = xkbShortcutText(keyCode, carbonModifiers, layout_, sway);
    return keys ? QStringLiteral("bindsym %1 exec %2").arg(*keys, command) : QString();
}

}  // namespace orlo::wayland
