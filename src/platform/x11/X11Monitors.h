#pragma once
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>
#include <optional>
#include <xcb/randr.h>

namespace orlo::x11 {

class XConnection;

// The RandR monitors of the screen, in root-window coordinates. The request leaves when the
// object is made, so that callers can send theirs alongside before waiting for any reply.
class X11Monitors {
public:
    struct Monitor {
        QString name;
        QRect geometry;
        bool primary = false;
        QList<quint32> outputs;
        QStringList outputNames;
    };

    explicit X11Monitors(XConnection& x);
    X11Monitors(const X11Monitors&) = delete;
    X11Monitors& operator=(const X11Monitors&) = delete;
    ~X11Monitors();

    // The primary monitor first; the whole root window when RandR reports no monitor.
    // Names (of the monitors and their outputs) cost more round trips: they are read when
    // the first read asks for them.
    const QList<Monitor>& read(bool withNames = false);
    QRect primary() { return read().first().geometry; }

private:
    XConnection& x_;
    xcb_randr_get_monitors_cookie_t cookie_;
    std::optional<QList<Monitor>> monitors_;
};

}  // namespace orlo::x11
