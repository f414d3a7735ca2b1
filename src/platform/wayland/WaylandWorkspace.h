#pragma once
#include "platform/Workspace.h"
#include "platform/linux/DesktopEntries.h"

namespace orlo::wayland {

// The applications of a Wayland session, as far as the compositor shows them to Orlo: without
// a window list, no application is known to be in front.
class WaylandWorkspace : public Workspace {
    Q_OBJECT
public:
    using Workspace::Workspace;
    std::optional<AppInfo> frontmostApplication() override { return std::nullopt; }
    qint64 ownPid() const override;
    // The icon of the application's desktop entry.
    QIcon applicationIcon(const QString& bundleId) override;

private:
    DesktopEntries entries_;
};

}  // namespace orlo::wayland
