#include "platform/x11/X11WindowCatalog.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QSet>
#include <QTimer>
#include <algorithm>
#include <xcb/xcb_ewmh.h>

namespace orlo::x11 {

namespace {
constexpr quint32 allDesktops = 0xFFFFFFFF;

// One property reply, freed with the object.
struct Property {
    xcb_get_property_reply_t* reply = nullptr;
    Property(xcb_connection_t* c, xcb_get_property_cookie_t cookie) : reply(xcb_get_property_reply(c, cookie, nullptr)) {}
    ~Property() { free(reply); }
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;
    bool present() const { return reply && reply->type != XCB_NONE; }
    QList<quint32> words() const
    {
        QList<quint32> list;
        if (!reply || reply->format != 32) return list;
        const auto* values = static_cast<const quint32*>(xcb_get_property_value(reply));
        for (int i = 0; i < xcb_get_property_value_length(reply) / 4; ++i) list << values[i];
        return list;
    }
    QByteArray bytes() const
    {
        if (!reply) return {};
        return QByteArray(static_cast<const char*>(xcb_get_property_value(reply)), xcb_get_property_value_length(reply));
    }
};

struct Requests {
    xcb_get_property_cookie_t pid, type, state, desktop, netName, name, transient, extents, opacity;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t position;
};
}  // namespace

X11WindowCatalog::X11WindowCatalog(XConnection& x, X11Workspace& workspace) : x_(x), workspace_(workspace) {}

const QList<X11WindowCatalog::Client>& X11WindowCatalog::clients()
{
    if (!snapshot_) {
        snapshot_ = readClients();
        // One listing reads the windows once; the next one sees them afresh.
        QTimer::singleShot(0, &x_, [this, alive = std::weak_ptr<bool>(alive_)] {
            if (alive.lock()) snapshot_.reset();
        });
    }
    return *snapshot_;
}

QList<X11WindowCatalog::Client> X11WindowCatalog::readClients()
{
    xcb_connection_t* c = x_.connection();
    xcb_ewmh_connection_t* e = x_.ewmh();
    const xcb_window_t root = x_.root();
    const auto stackCookie = xcb_ewmh_get_client_list_stacking(e, 0);
    const auto desktopCookie = xcb_ewmh_get_current_desktop(e, 0);
    X11Monitors monitors(x_);
    xcb_ewmh_get_windows_reply_t stack;
    if (!xcb_ewmh_get_windows_reply(e, stackCookie, &stack, nullptr)) {
        xcb_discard_reply(c, desktopCookie.sequence);
        return {};
    }
    QList<xcb_window_t> windows(stack.windows, stack.windows + stack.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&stack);
    std::reverse(windows.begin(), windows.end());  // topmost first
    uint32_t currentDesktop = 0;
    const bool knowsDesktop = xcb_ewmh_get_current_desktop_reply(e, desktopCookie, &currentDesktop, nullptr);

    const xcb_atom_t opacityAtom = x_.atom("_NET_WM_WINDOW_OPACITY");
    QList<Requests> requests;
    requests.reserve(windows.size());
    for (xcb_window_t w : windows) {
        requests << Requests{xcb_get_property(c, 0, w, e->_NET_WM_PID, XCB_ATOM_CARDINAL, 0, 1),
                             xcb_get_property(c, 0, w, e->_NET_WM_WINDOW_TYPE, XCB_ATOM_ATOM, 0, 16),
                             xcb_get_property(c, 0, w, e->_NET_WM_STATE, XCB_ATOM_ATOM, 0, 32),
                             xcb_get_property(c, 0, w, e->_NET_WM_DESKTOP, XCB_ATOM_CARDINAL, 0, 1),
                             xcb_get_property(c, 0, w, e->_NET_WM_NAME, e->UTF8_STRING, 0, 1024),
                             xcb_get_property(c, 0, w, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
                             xcb_get_property(c, 0, w, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 0, 1),
                             xcb_get_property(c, 0, w, e->_NET_FRAME_EXTENTS, XCB_ATOM_CARDINAL, 0, 4),
                             xcb_get_property(c, 0, w, opacityAtom, XCB_ATOM_CARDINAL, 0, 1),
                             xcb_get_geometry(c, w),
                             xcb_translate_coordinates(c, w, root, 0, 0)};
    }
    const QPoint origin = monitors.primary().topLeft();
    const xcb_atom_t layered[] = {e->_NET_WM_WINDOW_TYPE_DESKTOP, e->_NET_WM_WINDOW_TYPE_DOCK, e->_NET_WM_WINDOW_TYPE_MENU,
                                  e->_NET_WM_WINDOW_TYPE_DROPDOWN_MENU, e->_NET_WM_WINDOW_TYPE_POPUP_MENU,
                                  e->_NET_WM_WINDOW_TYPE_TOOLTIP, e->_NET_WM_WINDOW_TYPE_NOTIFICATION,
                                  e->_NET_WM_WINDOW_TYPE_COMBO, e->_NET_WM_WINDOW_TYPE_DND, e->_NET_WM_WINDOW_TYPE_SPLASH};
    QList<Client> list;
    for (qsizetype i = 0; i < windows.size(); ++i) {
        const Requests& r = requests[i];
        Client client;
        client.window = windows[i];
        const QList<quint32> pid = Property(c, r.pid).words();
        // A window that does not name its process (an old or remote client) stands for an
        // application of its own.
        client.pid = pid.isEmpty() || !pid.first() ? -qint64(client.window) : qint64(pid.first());
        const QList<quint32> types = Property(c, r.type).words();
        const QList<quint32> states = Property(c, r.state).words();
        const QList<quint32> desktop = Property(c, r.desktop).words();
        const Property netName(c, r.netName), name(c, r.name);
        client.title = netName.present() ? QString::fromUtf8(netName.bytes()) : QString::fromLocal8Bit(name.bytes());
        const bool transient = !Property(c, r.transient).words().isEmpty();
        const QList<quint32> extents = Property(c, r.extents).words();
        const QList<quint32> opacity = Property(c, r.opacity).words();
        auto* geometry = xcb_get_geometry_reply(c, r.geometry, nullptr);
        auto* position = xcb_translate_coordinates_reply(c, r.position, nullptr);
        if (geometry && position) {
            const int left = extents.size() == 4 ? int(extents[0]) : 0, right = extents.size() == 4 ? int(extents[1]) : 0;
            const int top = extents.size() == 4 ? int(extents[2]) : 0, bottom = extents.size() == 4 ? int(extents[3]) : 0;
            client.frame = QRectF(position->dst_x - left - origin.x(), position->dst_y - top - origin.y(),
                                  geometry->width + left + right, geometry->height + top + bottom);
        }
        free(geometry);
        free(position);

        // The first type the window manager knows is the one it uses; without one a window is
        // normal, unless it is transient for another: then it is a dialog.
        xcb_atom_t type = transient ? e->_NET_WM_WINDOW_TYPE_DIALOG : e->_NET_WM_WINDOW_TYPE_NORMAL;
        if (!types.isEmpty()) type = types.first();
        const bool skipTaskbar = states.contains(e->_NET_WM_STATE_SKIP_TASKBAR);
        client.layer = std::find(std::begin(layered), std::end(layered), type) != std::end(layered) ? 1 : 0;
        client.standard = !skipTaskbar && (type == e->_NET_WM_WINDOW_TYPE_NORMAL || type == e->_NET_WM_WINDOW_TYPE_DIALOG);
        client.regular = !skipTaskbar && type == e->_NET_WM_WINDOW_TYPE_NORMAL && !transient;
        client.hidden = states.contains(e->_NET_WM_STATE_HIDDEN);
        client.onThisDesktop = !knowsDesktop || desktop.isEmpty() || desktop.first() == allDesktops || desktop.first() == currentDesktop;
        if (!opacity.isEmpty()) client.alpha = double(opacity.first()) / double(0xFFFFFFFFu);
        list << client;
    }
    return list;
}

std::optional<AppInfo> X11WindowCatalog::applicationOf(xcb_window_t window)
{
    // A window's application does not change: ask the window system once per window.
    auto it = apps_.find(window);
    if (it == apps_.end()) it = apps_.insert(window, workspace_.applicationOf(window));
    return *it;
}

QList<RunningApp> X11WindowCatalog::runningApplications()
{
    const QList<Client>& all = clients();
    QSet<xcb_window_t> present;
    for (const Client& client : all) present.insert(client.window);
    for (auto it = apps_.begin(); it != apps_.end();) it = present.contains(it.key()) ? std::next(it) : apps_.erase(it);

    QList<RunningApp> apps;
    QHash<qint64, qsizetype> index;
    for (const Client& client : all) {
        if (!client.pid) continue;
        auto at = index.constFind(client.pid);
        if (at == index.constEnd()) {
            const auto info = applicationOf(client.window);
            at = index.insert(client.pid, apps.size());
            apps << RunningApp{client.pid, info ? info->bundleId : QString(), info ? info->name : QString(), false};
        }
        apps[*at].regular = apps[*at].regular || client.regular;
    }
    return apps;
}

QList<ScreenWindow> X11WindowCatalog::onScreenWindows()
{
    QList<ScreenWindow> list;
    for (const Client& client : clients())
        if (client.onThisDesktop && !client.hidden)
            list << ScreenWindow{quint32(client.window), client.pid, client.layer, client.frame, client.alpha, client.title};
    return list;
}

std::optional<QList<AppWindow>> X11WindowCatalog::applicationWindows(qint64 pid)
{
    QList<AppWindow> list;
    for (const Client& client : clients())
        if (client.pid == pid && client.onThisDesktop)
            list << AppWindow{client.window, quint32(client.window), client.title, client.frame, client.hidden, client.standard};
    return list;
}

void X11WindowCatalog::raise(WindowId element, bool)
{
    // As a pager asks: the user chose this window, so focus-stealing prevention lets it
    // through; the window manager also brings a minimized window back.
    xcb_ewmh_request_change_active_window(x_.ewmh(), 0, xcb_window_t(element), XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
                                          XCB_CURRENT_TIME, XCB_NONE);
    x_.flush();
}

void X11WindowCatalog::activate(qint64 pid)
{
    for (const Client& client : clients())
        if (client.pid == pid && client.onThisDesktop) {
            raise(client.window, client.hidden);
            return;
        }
}

}  // namespace orlo::x11
