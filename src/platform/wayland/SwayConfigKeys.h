#pragma once
#include "platform/wayland/NoHotKeys.h"

namespace orlo {
class KeyboardLayout;
}

namespace orlo::wayland {

// sway gives no program a global shortcut: its configuration binds keys to commands, so every
// registration is refused and each of Orlo's shortcuts becomes a bindsym line that runs the
// matching `orlo ACTION`, in sway's key names.
class SwayConfigKeys : public NoHotKeys {
    Q_OBJECT
public:
    explicit SwayConfigKeys(KeyboardLayout& layout, QObject* parent = nullptr) : NoHotKeys(parent), layout_(layout) {}
    // Whether the session's sway answers on its IPC socket.
    static bool offered();

    QString bindingsFile() const override { return QStringLiteral("~/.config/sway/config"); }
    QString bindingLine(quint32 keyCode, quint32 carbonModifiers, const QString& command) override;

private:
    KeyboardLayout& layout_;
};

}  // namespace orlo::wayland
