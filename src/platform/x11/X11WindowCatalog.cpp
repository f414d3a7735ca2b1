#include "platform/x11/X11WindowCatalog.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/WindowTitle.h"
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
    xcb_get_property_cookie_t type, state, desktop, netName, name, transient, extents, opacity;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t position;
};
}  // namespace

X11WindowCatalog::X11WindowCatalog(XConnection& x, X11Workspace& workspace) : x_(x), workspace_(workspace), history_(x) {}

X11WindowCatalog::~X11WindowCatalog() = default;

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
    const auto desktopCookie = xcb_ewmh_get_current_desktop(e, 0);
    X11Monitors monitors(x_);
    const QList<xcb_window_t> windows = history_.arrange(x_.clientWindows());
    const QSet<xcb_window_t> present(windows.cbegin(), windows.cend());
    apps_.removeIf([&](const auto& entry) { return !present.contains(entry.key()); });
    uint32_t currentDesktop = 0;
    const bool knowsDesktop = xcb_ewmh_get_current_desktop_reply(e, desktopCookie, &currentDesktop, nullptr);

    const xcb_atom_t opacityAtom = x_.atom("_NET_WM_WINDOW_OPACITY");
    QList<Requests> requests;
    requests.reserve(windows.size());
    for (xcb_window_t w : windows) {
        requests << Requests{xcb_get_property(c, 0, w, e->_NET_WM_WINDOW_TYPE, XCB_ATOM_ATOM, 0, 16),
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
    const xcb_atom_t recognised[] = {e->_NET_WM_WINDOW_TYPE_NORMAL, e->_NET_WM_WINDOW_TYPE_DIALOG,
                                     e->_NET_WM_WINDOW_TYPE_UTILITY, e->_NET_WM_WINDOW_TYPE_TOOLBAR,
                                     e->_NET_WM_WINDOW_TYPE_DESKTOP, e->_NET_WM_WINDOW_TYPE_DOCK, e->_NET_WM_WINDOW_TYPE_MENU,
                                     e->_NET_WM_WINDOW_TYPE_DROPDOWN_MENU, e->_NET_WM_WINDOW_TYPE_POPUP_MENU,
                                     e->_NET_WM_WINDOW_TYPE_TOOLTIP, e->_NET_WM_WINDOW_TYPE_NOTIFICATION,
                                     e->_NET_WM_WINDOW_TYPE_COMBO, e->_NET_WM_WINDOW_TYPE_DND, e->_NET_WM_WINDOW_TYPE_SPLASH};
    QList<Client> list;
    for (qsizetype i = 0; i < windows.size(); ++i) {
        const Requests& r = requests[i];
        Client client;
        client.window = windows[i];
        const auto app = applicationOf(client.window);
        // A window whose process is unknown (an old or remote client) stands for an
        // application of its own.
        client.pid = app && app->pid > 0 ? app->pid : -qint64(client.window);
        if (app) client.app = *app;
        const QList<quint32> types = Property(c, r.type).words();
        const QList<quint32> states = Property(c, r.state).words();
        const QList<quint32> desktop = Property(c, r.desktop).words();
        const Property netName(c, r.netName), name(c, r.name);
        client.title = windowTitle(x_, netName.present() && netName.reply->type == e->UTF8_STRING ? std::optional(netName.bytes()) : std::nullopt,
                                   name.reply ? name.reply->type : xcb_atom_t(XCB_NONE), name.bytes());
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

        // The first type Orlo knows is the one that counts: a client lists types of its own
        // desktop's first (a frameless Qt window starts with KDE's "override") and a standard
        // one after them. Without one a window is normal, unless it is transient for
        // another: then it is a dialog.
        xcb_atom_t type = transient ? e->_NET_WM_WINDOW_TYPE_DIALOG : e->_NET_WM_WINDOW_TYPE_NORMAL;
        if (const auto known = std::find_if(types.cbegin(), types.cend(), [&](quint32 t) { return std::find(std::begin(recognised), std::end(recognised), t) != std::end(recognised); });
            known != types.cend())
            type = *known;
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
    QList<RunningApp> apps;
    QHash<QPair<qint64, QString>, qsizetype> index;
    for (const Client& client : clients()) {
        auto at = index.constFind({client.pid, client.app.bundleId});
        if (at == index.constEnd()) {
            at = index.insert({client.pid, client.app.bundleId}, apps.size());
            apps << RunningApp{client.pid, client.app.bundleId, client.app.name, false};
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
            list << ScreenWindow{quint32(client.window), client.pid, client.layer, client.frame, client.alpha, client.title, client.app.bundleId};
    return list;
}

std::optional<QList<AppWindow>> X11WindowCatalog::applicationWindows(const RunningApp& app)
{
    QList<AppWindow> list;
    for (const Client& client : clients())
        if (client.pid == app.pid && client.app.bundleId == app.bundleId && client.onThisDesktop)
            list << AppWindow{client.window, quint32(client.window), client.title, client.frame, client.hidden, client.standard};
    return list;
}

void X11WindowCatalog::raise(WindowId element, bool unminimize)
{
    // Mapping an iconic window asks the window manager to restore it (a request of the
    // ICCCM's), for those that do not restore a window they are asked to activate.
    if (unminimize) xcb_map_window(x_.connection(), xcb_window_t(element));
    // As a pager asks, with the time of the user's key: the user chose this window, so
    // focus-stealing prevention lets it through.
    xcb_ewmh_request_change_active_window(x_.ewmh(), 0, xcb_window_t(element), XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
                                          x_.lastUserTime(), XCB_NONE);
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
