#include "platform/mac/MacMouseMonitor.h"
#import <AppKit/AppKit.h>

// No Core Foundation object is created here.
namespace orlo::mac {

struct MacMouseMonitor::Monitors {
    id global = nil;
    id local = nil;
};

MacMouseMonitor::MacMouseMonitor(QObject* parent) : MouseMonitor(parent), monitors_(std::make_unique<Monitors>()) {}

MacMouseMonitor::~MacMouseMonitor() { stop(); }

bool MacMouseMonitor::start()
{
    if (monitors_->global) return true;
    const NSEventMask mask = NSEventMaskLeftMouseDown | NSEventMaskLeftMouseDragged | NSEventMaskLeftMouseUp;
    // Both handlers run on the main thread.
    void (^report)(NSEvent*) = ^(NSEvent* event) {
      const QPointF at = location();
      switch (event.type) {
      case NSEventTypeLeftMouseDown: emit leftMouseDown(at); break;
      case NSEventTypeLeftMouseDragged: emit leftMouseDragged(at); break;
      case NSEventTypeLeftMouseUp: emit leftMouseUp(at); break;
      default: break;
      }
    };
    monitors_->global = [NSEvent addGlobalMonitorForEventsMatchingMask:mask handler:report];
    monitors_->local = [NSEvent addLocalMonitorForEventsMatchingMask:mask
                                                             handler:^NSEvent*(NSEvent* event) {
                                                               report(event);
                                                               return event;
                                                             }];
    if (!monitors_->global) stop();
    return monitors_->global != nil;
}

void MacMouseMonitor::stop()
{
    if (monitors_->global) [NSEvent removeMonitor:monitors_->global];
    if (monitors_->local) [NSEvent removeMonitor:monitors_->local];
    monitors_->global = nil;
    monitors_->local = nil;
}

QPointF MacMouseMonitor::location()
{
    const NSPoint at = [NSEvent mouseLocation];
    return QPointF(at.x, at.y);
}

}  // namespace orlo::mac
