#include "platform/x11/X11Screens.h"
#include "platform/x11/PointScale.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/XConnection.h"
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <algorithm>

namespace orlo::x11 {

X11Screens::X11Screens(XConnection& x, QObject* parent) : Screens(parent), x_(x)
{
    // Qt follows the RandR monitors too: its notifications say when ours change.
    auto* app = qGuiApp;
    auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, &Screens::changed);
        connect(screen, &QScreen::availableGeometryChanged, this, &Screens::changed);
    };
    for (QScreen* screen : QGuiApplication::screens()) watch(screen);
    connect(app, &QGuiApplication::screenAdded, this, [this, watch](QScreen* screen) {
        watch(screen);
        emit changed();
    });
    connect(app, &QGuiApplication::screenRemoved, this, &Screens::changed);
    connect(app, &QGuiApplication::primaryScreenChanged, this, &Screens::changed);
}

QRectF X11Screens::toScreenCoordinates(const QRect& r, const QRect& primary)
{
    return QRectF(r.x() - primary.x(), (primary.y() + primary.height()) - (r.y() + r.height()), r.width(), r.height());
}

QList<X11Screens::Strut> X11Screens::struts(const QList<quint32>& values, const QSize& root)
{
    QList<Strut> list;
    const int w = root.width(), h = root.height();
    auto v = [&](int i) { return int(values[i]); };
    if (values.size() >= 12) {
        if (v(0)) list << Strut{Strut::Left, QRect(QPoint(0, v(4)), QPoint(v(0) - 1, v(5)))};
        if (v(1)) list << Strut{Strut::Right, QRect(QPoint(w - v(1), v(6)), QPoint(w - 1, v(7)))};
        if (v(2)) list << Strut{Strut::Top, QRect(QPoint(v(8), 0), QPoint(v(9), v(2) - 1))};
        if (v(3)) list << Strut{Strut::Bottom, QRect(QPoint(v(10), h - v(3)), QPoint(v(11), h - 1))};
    } else if (values.size() >= 4) {
        if (v(0)) list << Strut{Strut::Left, QRect(0, 0, v(0), h)};
        if (v(1)) list << Strut{Strut::Right, QRect(w - v(1), 0, v(1), h)};
        if (v(2)) list << Strut{Strut::Top, QRect(0, 0, w, v(2))};
        if (v(3)) list << Strut{Strut::Bottom, QRect(0, h - v(3), w, v(3))};
    }
    return list;
}

QRect X11Screens::visibleArea(const QRect& monitor, const QList<Strut>& struts)
{
    // Struts are measured from the root window's edges, so one may cross other monitors on
    // its way: it counts on the monitor where its inner edge lies.
    QRect r = monitor;
    for (const Strut& s : struts) {
        if (!s.area.intersects(monitor)) continue;
        switch (s.edge) {
        case Strut::Left:
            if (s.area.right() < monitor.right()) r.setLeft(std::max(r.left(), s.area.right() + 1));
            break;
        case Strut::Right:
            if (s.area.left() > monitor.left()) r.setRight(std::min(r.right(), s.area.left() - 1));
            break;
        case Strut::Top:
            if (s.area.bottom() < monitor.bottom()) r.setTop(std::max(r.top(), s.area.bottom() + 1));
            break;
        case Strut::Bottom:
            if (s.area.top() > monitor.top()) r.setBottom(std::min(r.bottom(), s.area.top() - 1));
            break;
        }
    }
    return r;
}

X11Screens::Strut X11Screens::anchored(const Strut& strut, const QRect& dock, const QList<QRect>& monitors)
{
    for (const QRect& monitor : monitors)
        if (strut.area.intersects(monitor)) return strut;
    return dock.isEmpty() ? strut : Strut{strut.edge, dock};
}

QList<X11Screens::Strut> X11Screens::readStruts(xcb_get_property_cookie_t clientList, const QList<QRect>& monitors)
{
    xcb_connection_t* c = x_.connection();
    xcb_ewmh_connection_t* ewmh = x_.ewmh();
    xcb_ewmh_get_windows_reply_t clients;
    if (!xcb_ewmh_get_client_list_reply(ewmh, clientList, &clients, nullptr)) return {};
    const QList<xcb_window_t> windows(clients.windows, clients.windows + clients.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&clients);
    // Each round of questions goes out whole before the first answer is read.
    QList<xcb_get_property_cookie_t> partial, full;
    for (xcb_window_t w : windows) {
        partial << xcb_ewmh_get_wm_strut_partial(ewmh, w);
        full << xcb_ewmh_get_wm_strut(ewmh, w);
    }
    const QSize root(x_.screen()->width_in_pixels, x_.screen()->height_in_pixels);
    struct Dock {
        QList<Strut> struts;
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t position;
    };
    QList<Dock> docks;
    for (int i = 0; i < windows.size(); ++i) {
        xcb_ewmh_wm_strut_partial_t p;
        xcb_ewmh_get_extents_reply_t f;
        const bool hasPartial = xcb_ewmh_get_wm_strut_partial_reply(ewmh, partial[i], &p, nullptr);
        const bool hasFull = xcb_ewmh_get_wm_strut_reply(ewmh, full[i], &f, nullptr);
        QList<Strut> reserved;
        // The partial form, when a dock gives both, is the one that says which monitor.
        if (hasPartial)
            reserved = struts({p.left, p.right, p.top, p.bottom, p.left_start_y, p.left_end_y, p.right_start_y,
                               p.right_end_y, p.top_start_x, p.top_end_x, p.bottom_start_x, p.bottom_end_x},
                              root);
        else if (hasFull)
            reserved = struts({f.left, f.right, f.top, f.bottom}, root);
        if (!reserved.isEmpty())
            docks << Dock{reserved, xcb_get_geometry(c, windows[i]), xcb_translate_coordinates(c, windows[i], x_.root(), 0, 0)};
    }
    QList<Strut> list;
    for (const Dock& dock : std::as_const(docks)) {
        auto* geometry = xcb_get_geometry_reply(c, dock.geometry, nullptr);
        auto* position = xcb_translate_coordinates_reply(c, dock.position, nullptr);
        const QRect area = geometry && position ? QRect(position->dst_x, position->dst_y, geometry->width, geometry->height) : QRect();
        free(geometry);
        free(position);
        for (const Strut& s : dock.struts) list << anchored(s, area, monitors);
    }
    return list;
}

QList<QRect> X11Screens::readWorkAreas(const QList<QRect>& monitors)
{
    xcb_connection_t* c = x_.connection();
    xcb_ewmh_connection_t* ewmh = x_.ewmh();
    uint32_t desktop = 0;
    xcb_ewmh_get_current_desktop_reply(ewmh, xcb_ewmh_get_current_desktop(ewmh, 0), &desktop, nullptr);
    const QByteArray gtkName = "_GTK_WORKAREAS_D" + QByteArray::number(desktop);
    const auto gtkCookie = xcb_get_property(c, 0, x_.root(), x_.atom(gtkName.constData()), XCB_ATOM_CARDINAL, 0, 4 * 64);
    const auto netCookie = xcb_get_property(c, 0, x_.root(), ewmh->_NET_WORKAREA, XCB_ATOM_CARDINAL, 4 * desktop, 4);
    auto rectangles = [](xcb_get_property_reply_t* reply) {
        QList<QRect> list;
        if (reply && reply->format == 32) {
            const auto* v = static_cast<const quint32*>(xcb_get_property_value(reply));
            for (int i = 0; i + 3 < xcb_get_property_value_length(reply) / 4; i += 4)
                list << QRect(int(v[i]), int(v[i + 1]), int(v[i + 2]), int(v[i + 3]));
        }
        free(reply);
        return list;
    };
    const QList<QRect> gtk = rectangles(xcb_get_property_reply(c, gtkCookie, nullptr));
    const QList<QRect> net = rectangles(xcb_get_property_reply(c, netCookie, nullptr));
    return workAreas(monitors, gtk, net);
}

QList<QRect> X11Screens::workAreas(const QList<QRect>& monitors, const QList<QRect>& perMonitor, const QList<QRect>& whole)
{
    QList<QRect> areas;
    for (const QRect& monitor : monitors) {
        QRect area = monitor;
        // GNOME names each monitor's work area, its top bar included: the bar has no strut.
        // A rectangle larger than the monitor (a window manager that takes several
        // monitors for one) says nothing about it.
        for (const QRect& r : perMonitor)
            if (monitor.contains(r)) area = area.intersected(r);
        // The one rectangle of _NET_WORKAREA spans every monitor and cannot say which of
        // them a panel stands on; it is only trusted where there is one monitor.
        if (perMonitor.isEmpty() && monitors.size() == 1 && !whole.isEmpty() && whole.first().intersects(monitor))
            area = area.intersected(whole.first());
        areas << area;
    }
    return areas;
}

QList<ScreenInfo> X11Screens::screens()
{
    X11Monitors request(x_);
    const auto clientList = xcb_ewmh_get_client_list(x_.ewmh(), 0);
    const QList<X11Monitors::Monitor> monitors = request.read(true);
    QList<QRect> areas;
    for (const X11Monitors::Monitor& m : monitors) areas << m.geometry;
    const QList<Strut> reserved = readStruts(clientList, areas);
    const QList<QRect> workAreas = readWorkAreas(areas);
    const QRect primary = monitors.first().geometry;
    static const QRegularExpression panel(QStringLiteral("^(eDP|LVDS|DSI)"), QRegularExpression::CaseInsensitiveOption);
    QList<ScreenInfo> out;
    for (int i = 0; i < monitors.size(); ++i) {
        const X11Monitors::Monitor& m = monitors[i];
        ScreenInfo info;
        info.name = m.name;
        info.frame = PointScale::toPoints(toScreenCoordinates(m.geometry, primary));
        info.visibleFrame =
            PointScale::toPoints(toScreenCoordinates(visibleArea(m.geometry, reserved).intersected(workAreas[i]), primary));
        info.builtIn = std::any_of(m.outputNames.begin(), m.outputNames.end(),
                                   [](const QString& output) { return panel.match(output).hasMatch(); });
        // A monitor without an output of its own (a virtual one) is known by its name.
        info.displayId = m.outputs.isEmpty() ? quint32(qHash(m.name)) : m.outputs.first();
        out << info;
    }
    return out;
}

// A compositing manager owns the selection _NET_WM_CM_S<screen number>.
bool X11Screens::blendsWindows()
{
    xcb_connection_t* c = x_.connection();
    int number = 0;
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(c)); it.rem && it.data->root != x_.root(); xcb_screen_next(&it)) ++number;
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(number);
    auto* owner = xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, x_.atom(name.constData())), nullptr);
    const bool composited = owner && owner->owner != XCB_NONE;
    free(owner);
    return composited;
}

}  // namespace orlo::x11
