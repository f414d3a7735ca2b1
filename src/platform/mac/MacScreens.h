#pragma once
#include "platform/Screens.h"
#include <memory>

namespace orlo::mac {

// The displays as NSScreen reports them; AppKit's screen coordinates are Orlo's already.
class MacScreens : public Screens {
    Q_OBJECT
public:
    explicit MacScreens(QObject* parent = nullptr);
    ~MacScreens() override;
    QList<ScreenInfo> screens() override;

private:
    struct Observer;
    std::unique_ptr<Observer> observer_;
};

}  // namespace orlo::mac
