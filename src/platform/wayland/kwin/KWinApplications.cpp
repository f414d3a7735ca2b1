#include "platform/wayland/kwin/KWinApplications.h"
#include "platform/linux/ThemeIcon.h"

namespace orlo::kwin {

AppInfo KWinApplications::applicationOf(const KWinWindow& window)
{
    const QString key = window.desktopFile + QLatin1Char('\n') + window.resourceClass;
    auto it = byHints_.find(key);
    if (it == byHints_.end()) {
        AppInfo app;
        if (const auto* entry = entries_.find({window.desktopFile, window.resourceClass})) {
            app.bundleId = entry->id;
            app.name = entry->name;
        } else {
            app.bundleId = window.desktopFile.isEmpty() ? window.resourceClass : window.desktopFile;
            app.name = window.resourceClass.isEmpty() ? app.bundleId : window.resourceClass;
        }
        it = byHints_.insert(key, app);
    }
    AppInfo app = *it;
    app.pid = window.pid;
    return app;
}

QIcon KWinApplications::icon(const QString& bundleId)
{
    const auto* entry = bundleId.isEmpty() ? nullptr : entries_.byId(bundleId);
    return entry ? themeIcon(entry->icon) : QIcon();
}


}  // namespace orlo::kwin
