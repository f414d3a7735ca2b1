#pragma once
#include "platform/MouseMonitor.h"
#include <QTimer>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// The left button of every pointer, from XInput 2 raw events on the root window: the server
// sends them to Orlo even while another client (the window manager moving a window) holds
// the pointer grabbed. Raw events carry no position, and a warped pointer makes none: while
// the button is down the pointer is also looked at every few milliseconds.
class X11MouseMonitor : public MouseMonitor {
    Q_OBJECT
public:
    explicit X11MouseMonitor(XConnection& x, QObject* parent = nullptr);
    ~X11MouseMonitor() override;
    bool start() override;
    void stop() override;
    QPointF location() override;

private:
    void onEvent(xcb_generic_event_t* event);
    void select(quint32 mask);
    void checkMotion();
    quint32 logicalButton(quint32 physical);

    XConnection& x_;
    int listener_ = 0;
    quint8 opcode_ = 0;
    bool down_ = false;
    quint32 downButton_ = 0;  // the physical button that went down
    QPointF last_;
    QTimer poll_;
};

}  // namespace orlo::x11
