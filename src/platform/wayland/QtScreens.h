#pragma once
#include "platform/Screens.h"

namespace orlo::wayland {

// The outputs as Qt's own Wayland connection knows them (positions from xdg-output). A
// Wayland client is told no work area: the visible frame is the whole output.
class QtScreens : public Screens {
    Q_OBJECT
public:
    explicit QtScreens(QObject* parent = nullptr);
    QList<ScreenInfo> screens() override;
};

}  // namespace orlo::wayland
