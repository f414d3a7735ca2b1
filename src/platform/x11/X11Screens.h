#pragma once
#include "platform/Screens.h"
#include <QList>
#include <QRect>
#include <QSize>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// Screens are the RandR monitors; their visible frames leave out the space that docks and
// panels reserve on each monitor. Display ids are RandR output ids.
class X11Screens : public Screens {
    Q_OBJECT
public:
    explicit X11Screens(XConnection& x, QObject* parent = nullptr);
    QList<ScreenInfo> screens() override;
    bool blendsWindows() override;

    // Qt's desktop coordinates (top-left origin) to Orlo's y-up screen coordinates.
    static QRectF toScreenCoordinates(const QRect& desktopRect, const QRect& primary);

    // Space a dock reserves along one edge of the root window, in root coordinates.
    struct Strut {
        enum Edge { Left, Right, Top, Bottom } edge;
        QRect area;
    };
    // The struts of a _NET_WM_STRUT_PARTIAL (12 values) or _NET_WM_STRUT (4 values).
    static QList<Strut> struts(const QList<quint32>& values, const QSize& root);
    // Some docks measure their struts from their monitor's edge rather than the root
    // window's, which reserves space on no monitor at all: such a strut is taken to reserve
    // the space the dock itself covers along its edge.
    static Strut anchored(const Strut& strut, const QRect& dock, const QList<QRect>& monitors);
    // A monitor without the struts that stand on its own edges.
    static QRect visibleArea(const QRect& monitor, const QList<Strut>& struts);
    // What the window manager publishes of each monitor's work area: GNOME's per-monitor
    // rectangles (_GTK_WORKAREAS_D<n>), else the one _NET_WORKAREA rectangle.
    static QList<QRect> workAreas(const QList<QRect>& monitors, const QList<QRect>& perMonitor, const QList<QRect>& whole);

private:
    QList<Strut> readStruts(xcb_get_property_cookie_t clientList, const QList<QRect>& monitors);
    QList<QRect> readWorkAreas(const QList<QRect>& monitors);

    XConnection& x_;
};

}  // namespace orlo::x11
