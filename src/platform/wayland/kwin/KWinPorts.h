#pragma once
#include "platform/Platform.h"
#include "platform/wayland/kwin/KWinApplications.h"
#include "platform/wayland/kwin/KWinScriptBridge.h"
#include <memory>

namespace orlo::kwin {

// Windows, their placement, the screens' work areas and the application in front, on a
// KWin that runs Orlo's script. The ports it installs refer to it: it must outlive them.
class KWinPorts {
public:
    // Nothing, with the reason, when KWin does not offer its scripting interface or refuses
    // Orlo's script. plugin: the script's name in KWin, another than Orlo's to watch beside it.
    static std::unique_ptr<KWinPorts> start(const QDBusConnection& bus, QString* error,
                                            const QString& plugin = QString::fromLatin1(KWinScriptBridge::pluginName));

    // The window catalog, window server, workspace and screens of the platform.
    void install(Platform& platform);

    KWinDesktop& desktop() { return bridge_->desktop(); }

private:
    explicit KWinPorts(std::unique_ptr<KWinScriptBridge> bridge) : bridge_(std::move(bridge)) {}

    std::unique_ptr<KWinScriptBridge> bridge_;
    KWinApplications apps_;
};

}  // namespace orlo::kwin
