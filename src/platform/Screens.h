#pragma once
#include <QList>
#include <QObject>
#include <QRectF>
#include <QString>

namespace orlo {

// One display, in screen coordinates (see Geometry.h).
struct ScreenInfo {
    QRectF frame;
    QRectF visibleFrame;  // without docks and panels
    quint32 displayId = 0;
    bool builtIn = false;
    QString name;
};

class Screens : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Every screen, the primary (menu-bar) screen first.
    virtual QList<ScreenInfo> screens() = 0;
    // Whether the desktop blends translucent windows with what lies beneath them (on X11 only
    // while a compositing manager runs).
    virtual bool blendsWindows() { return true; }
signals:
    void changed();
};

}  // namespace orlo
