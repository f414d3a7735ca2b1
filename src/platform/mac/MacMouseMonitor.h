#pragma once
#include "platform/MouseMonitor.h"
#include <memory>

namespace orlo::mac {

// The left mouse button through NSEvent monitors: a global one for other applications'
// windows and a local one for Orlo's own. AppKit's mouse location is in screen coordinates.
class MacMouseMonitor : public MouseMonitor {
    Q_OBJECT
public:
    explicit MacMouseMonitor(QObject* parent = nullptr);
    ~MacMouseMonitor() override;
    bool start() override;
    void stop() override;
    QPointF location() override;

private:
    struct Monitors;
    std::unique_ptr<Monitors> monitors_;
};

}  // namespace orlo::mac
