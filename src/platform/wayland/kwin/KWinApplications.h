#pragma once
#include "platform/Workspace.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/wayland/kwin/KWinReport.h"
#include <QHash>

namespace orlo::kwin {

// Which application a window reported by KWin belongs to: the desktop entry named by the
// desktop-file name the window gave KWin or by its resource class, with its process. Shared
// by the switcher's catalog and the workspace, so that both name an application alike.
class KWinApplications {
public:
    AppInfo applicationOf(const KWinWindow& window);
    QIcon icon(const QString& bundleId);

private:
    DesktopEntries entries_;
    QHash<QString, AppInfo> byHints_;  // resolved once per desktop-file name and class
};

}  // namespace orlo::kwin
