#pragma once
#include <QObject>
#include <QPointF>

namespace orlo {

// The left mouse button of the whole session, seen whatever window it acts on. Locations
// are in screen coordinates (y up, see Geometry.h): the top-left corner of the pixel under
// the pointer.
class MouseMonitor : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Starts reporting; false when the system offers no global mouse events.
    virtual bool start() = 0;
    // Whether the system lets Orlo follow the mouse over other programs' windows at all;
    // where it does not (Wayland), a window dragged to a screen edge is the desktop's business.
    virtual bool canFollow() const { return true; }
    virtual void stop() = 0;
    virtual QPointF location() = 0;
signals:
    void leftMouseDown(QPointF location);
    void leftMouseDragged(QPointF location);
    void leftMouseUp(QPointF location);
};

}  // namespace orlo
