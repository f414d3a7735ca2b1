#pragma once
#include "platform/Screens.h"

namespace orlo::kwin {

class KWinDesktop;

// The screens as KWin lays them out, with the work areas its panels leave, which a Wayland
// client cannot learn from the protocol. KWin's first screen is the primary one.
class KWinScreens : public Screens {
    Q_OBJECT
public:
    explicit KWinScreens(KWinDesktop& desktop, QObject* parent = nullptr);
    QList<ScreenInfo> screens() override;

private:
    KWinDesktop& desktop_;
    QList<ScreenInfo> last_;
};

}  // namespace orlo::kwin
