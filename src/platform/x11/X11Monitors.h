#pragma once
#include <QList>
#include <QRect>
#include <QString>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// The RandR monitors of the screen, in root-window coordinates.
class X11Monitors {
public:
    struct Monitor {
        QString name;
        QRect geometry;
        bool primary = false;
        QList<quint32> outputs;
        QStringList outputNames;
    };

    explicit X11Monitors(XConnection& x) : x_(x) {}

    // The primary monitor first; the whole root window when RandR reports no monitor.
    // Names (of the monitors and their outputs) cost more round trips: read when asked for.
    QList<Monitor> read(bool withNames = false);
    QRect primary();

private:
    XConnection& x_;
};

}  // namespace orlo::x11
