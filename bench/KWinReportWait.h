#pragma once
// Waiting, in a benchmark, for Orlo's script inside KWin to report a window at a frame.
#include "platform/wayland/kwin/KWinDesktop.h"
#include <QEventLoop>
#include <QTimer>

// Runs the event loop until KWin reports the window at the frame; false on time-out.
inline bool waitForReport(orlo::kwin::KWinDesktop& desktop, orlo::WindowId id, const QRectF& frame)
{
    // An event loop of its own, that wakes for the report and not on a polling tick.
    bool there = false;
    QEventLoop loop;
    QObject::connect(&desktop, &orlo::kwin::KWinDesktop::changed, &loop, [&] {
        const orlo::kwin::KWinWindow* w = desktop.window(id);
        if ((there = w && desktop.frameOf(*w) == frame)) loop.quit();
    });
    QTimer::singleShot(3000, &loop, &QEventLoop::quit);
    loop.exec();
    return there;
}
