#pragma once
#include "platform/WindowServer.h"
#include "switcher/BrowserTab.h"
#include <QIcon>
#include <QString>
#include <optional>
#include <variant>

namespace orlo {

// The window a switch item stands for.
struct SwitchWindow {
    std::optional<WindowId> element;  // absent when the application lists no windows of its own
    quint32 number = 0;                // 0 when unknown
    bool minimized = false;
};

// One entry of the window switcher: a window or a browser tab.
struct SwitchItem {
    using Window = SwitchWindow;
    using Kind = std::variant<Window, BrowserTab>;

    QString id;  // "w" + window number, "m" + pid + "-" + running number, or "t..." for a tab
    qint64 pid = 0;
    QString appName;
    QIcon icon;
    QString title;
    Kind kind;

    bool isTab() const { return std::holds_alternative<BrowserTab>(kind); }
    bool isMinimized() const
    {
        const auto* w = std::get_if<Window>(&kind);
        return w && w->minimized;
    }
};

}  // namespace orlo
