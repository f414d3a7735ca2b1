#include "platform/wayland/kwin/KWinPorts.h"
#include "platform/wayland/kwin/KWinScreens.h"
#include "platform/wayland/kwin/KWinWindowCatalog.h"
#include "platform/wayland/kwin/KWinWindowServer.h"
#include "platform/wayland/kwin/KWinWorkspace.h"

namespace orlo::kwin {

std::unique_ptr<KWinPorts> KWinPorts::start(const QDBusConnection& bus, QString* error, const QString& plugin)
{
    if (!KWinScriptBridge::offeredOn(bus)) {
        *error = QStringLiteral("the compositor offers no KWin scripting interface (org.kde.kwin.Scripting).");
        return nullptr;
    }
    auto bridge = KWinScriptBridge::start(bus, error, plugin);
    if (!bridge) return nullptr;
    return std::unique_ptr<KWinPorts>(new KWinPorts(std::move(bridge)));
}

void KWinPorts::install(Platform& platform)
{
    KWinDesktop& windows = desktop();
    platform.windowCatalog = std::make_unique<KWinWindowCatalog>(windows, apps_);
    platform.windowServer = std::make_unique<KWinWindowServer>(windows);
    platform.workspace = std::make_unique<KWinWorkspace>(windows, apps_);
    platform.screens = std::make_unique<KWinScreens>(windows);
}

}  // namespace orlo::kwin
