#pragma once
#include <QObject>

namespace orlo {

// Application-wide moments that modules may need to act on.
class AppEvents : public QObject {
    Q_OBJECT
signals:
    // Orlo is about to end by an orderly way (Quit, a termination signal, the end of the
    // desktop session): save what must not be lost, undo what must not outlive the process.
    void willTerminate();
};

struct Platform;
class Defaults;
class HotKeys;
class Permissions;

// What every module is built from: the ports and the shared application services.
struct OrloContext {
    Platform& platform;
    Defaults& defaults;
    HotKeys& hotKeys;
    Permissions& permissions;
    AppEvents& events;
};

}  // namespace orlo
