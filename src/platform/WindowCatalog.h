#pragma once
#include "platform/WindowServer.h"
#include <QList>
#include <QRectF>
#include <QString>
#include <optional>

namespace orlo {

// A running application as the switcher considers it.
struct RunningApp {
    qint64 pid = 0;  // negative for a window whose process is unknown
    QString bundleId;  // empty when the application has none
    QString name;      // empty when the application has none
    bool regular = false;  // shows ordinary windows that the user switches between
};

// One entry of the window server's list of on-screen windows.
struct ScreenWindow {
    quint32 number = 0;
    qint64 pid = 0;
    int layer = 0;  // 0: an ordinary window; docks, panels and the desktop stand on other layers
    QRectF bounds;  // top-left coordinates
    std::optional<double> alpha;
    QString name;
    // The owner's bundleId where one process shows several applications (empty: the
    // process is the application).
    QString bundleId{};
};

// One window of an application, as the application itself lists it.
struct AppWindow {
    WindowId element = 0;
    std::optional<quint32> number;  // the window server's number, when it is known
    QString title;
    QRectF frame;  // top-left coordinates
    bool minimized = false;
    bool standard = true;  // a document or dialog window, not a panel, sheet or menu
};

// What the window switcher needs from the window system: the windows of the current
// desktop (or Space) and bringing one of them to the front. Every call fails quietly.
class WindowCatalog {
public:
    virtual ~WindowCatalog() = default;
    virtual QList<RunningApp> runningApplications() = 0;
    // On-screen windows of the current desktop, most recently active first (front to back
    // where the window system raises the window it activates).
    virtual QList<ScreenWindow> onScreenWindows() = 0;
    // The application's windows on the current desktop; nothing when it cannot be asked.
    virtual std::optional<QList<AppWindow>> applicationWindows(const RunningApp& app) = 0;
    // Makes the window the active one, restoring it first when it is minimized.
    virtual void raise(WindowId element, bool unminimize) = 0;
    // Brings the application to the front.
    virtual void activate(qint64 pid) = 0;
};

}  // namespace orlo
