#pragma once
#include "platform/EdgeTiling.h"

namespace orlo::x11 {

class XConnection;

// Reads the edge tiling setting of the window manager that runs: GSettings for mutter and
// metacity, kwinrc for KWin, xfconf's file for xfwm4.
class X11EdgeTiling : public EdgeTiling {
public:
    explicit X11EdgeTiling(XConnection& x) : x_(x) {}
    QString switchOffPlace() override;

private:
    XConnection& x_;
};

}  // namespace orlo::x11
