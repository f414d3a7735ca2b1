#pragma once
#include "platform/MouseMonitor.h"

namespace orlo::wayland {

// A Wayland client sees the pointer only over its own windows: there is no session-wide
// mouse to follow, so drag to snap stays off.
class NoMouseMonitor : public MouseMonitor {
    Q_OBJECT
public:
    using MouseMonitor::MouseMonitor;
    bool start() override { return false; }
    bool canFollow() const override { return false; }
    void stop() override {}
    QPointF location() override { return {}; }
};

}  // namespace orlo::wayland
