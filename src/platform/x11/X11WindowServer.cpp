#include "platform/x11/X11WindowServer.h"
#include "platform/x11/PointScale.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/XConnection.h"
#include <QByteArray>
#include <QDeadlineTimer>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <memory>
#include <xcb/xcb_icccm.h>

namespace orlo::x11 {

namespace {
struct Reply {
    xcb_get_property_reply_t* reply;
    explicit Reply(xcb_get_property_reply_t* r) : reply(r) {}
    ~Reply() { free(reply); }
    QList<quint32> cardinals() const
    {
        QList<quint32> list;
        if (!reply || reply->format != 32) return list;
        const auto* values = static_cast<const quint32*>(xcb_get_property_value(reply));
        for (int i = 0; i < xcb_get_property_value_length(reply) / 4; ++i) list << values[i];
        return list;
    }
};
}  // namespace

X11WindowServer::X11WindowServer(XConnection& x)
    : x_(x), wmState_(x.atom("WM_STATE")), gtkExtents_(x.atom("_GTK_FRAME_EXTENTS"))
{
}

X11WindowServer::MarginRequests X11WindowServer::requestMargins(xcb_window_t window)
{
    return {xcb_ewmh_get_frame_extents(x_.ewmh(), window),
            xcb_get_property(x_.connection(), 0, window, gtkExtents_, XCB_ATOM_CARDINAL, 0, 4)};
}

X11WindowServer::Margins X11WindowServer::margins(const MarginRequests& requests)
{
    Margins m;
    xcb_ewmh_get_extents_reply_t e;
    if (xcb_ewmh_get_frame_extents_reply(x_.ewmh(), requests.decorations, &e, nullptr))
        m.decorations = {int(e.left), int(e.right), int(e.top), int(e.bottom)};
    const QList<quint32> gtk = Reply(xcb_get_property_reply(x_.connection(), requests.invisible, nullptr)).cardinals();
    if (gtk.size() == 4) m.invisible = {int(gtk[0]), int(gtk[1]), int(gtk[2]), int(gtk[3])};
    return m;
}

std::optional<QRectF> X11WindowServer::frame(WindowId id)
{
    // Every question at once: one wait for all the answers.
    xcb_connection_t* c = x_.connection();
    const auto window = xcb_window_t(id);
    const auto geometryCookie = xcb_get_geometry(c, window);
    const auto positionCookie = xcb_translate_coordinates(c, window, x_.root(), 0, 0);
    const MarginRequests marginCookies = requestMargins(window);
    X11Monitors monitors(x_);
    auto* geometry = xcb_get_geometry_reply(c, geometryCookie, nullptr);
    auto* position = xcb_translate_coordinates_reply(c, positionCookie, nullptr);
    const Margins m = margins(marginCookies);
    const QPoint origin = monitors.primary().topLeft();
    std::optional<QRectF> result;
    if (geometry && position) {
        const int left = m.decorations.left - m.invisible.left, right = m.decorations.right - m.invisible.right;
        const int top = m.decorations.top - m.invisible.top, bottom = m.decorations.bottom - m.invisible.bottom;
        result = PointScale::toPoints(QRectF(position->dst_x - left - origin.x(), position->dst_y - top - origin.y(),
                                             geometry->width + left + right, geometry->height + top + bottom));
    }
    free(geometry);
    free(position);
    return result;
}

bool X11WindowServer::isMaximized(xcb_window_t window)
{
    xcb_ewmh_connection_t* ewmh = x_.ewmh();
    const QList<xcb_atom_t> states = atoms(window, ewmh->_NET_WM_STATE);
    return states.contains(ewmh->_NET_WM_STATE_MAXIMIZED_VERT) || states.contains(ewmh->_NET_WM_STATE_MAXIMIZED_HORZ);
}

void X11WindowServer::afterSettling(std::function<bool()> settled, int timeoutMs, std::function<void()> then)
{
    auto* poll = new QTimer(&context_);
    const QDeadlineTimer deadline(timeoutMs);
    QObject::connect(poll, &QTimer::timeout, &context_, [poll, deadline, settled = std::move(settled), then = std::move(then)] {
        if (!settled() && !deadline.hasExpired()) return;
        poll->stop();
        poll->deleteLater();
        then();
    });
    poll->start(2);
}

void X11WindowServer::leaveMaximized(xcb_window_t window, std::function<void()> then)
{
    if (!isMaximized(window)) return then();
    // A maximized window keeps its size until it is maximized no longer, and a client-side
    // decorated one only draws its shadows (_GTK_FRAME_EXTENTS) again once it knows: wait
    // for the window manager's and the client's answers before measuring the margins.
    const QList<quint32> extentsBefore = cardinals(window, gtkExtents_);
    xcb_ewmh_connection_t* ewmh = x_.ewmh();
    xcb_ewmh_request_change_wm_state(ewmh, 0, window, XCB_EWMH_WM_STATE_REMOVE, ewmh->_NET_WM_STATE_MAXIMIZED_VERT,
                                     ewmh->_NET_WM_STATE_MAXIMIZED_HORZ, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
    x_.flush();
    auto left = std::make_shared<bool>(false);
    afterSettling(
        [this, window, extentsBefore, left] {
            *left = *left || !isMaximized(window);
            return *left && (extentsBefore.isEmpty() || cardinals(window, gtkExtents_) != extentsBefore);
        },
        maximizeAnswerMs, std::move(then));
}

QRect X11WindowServer::attainable(const QRect& frame, const Margins& m, const xcb_size_hints_t* hints)
{
    const int decorationsWidth = m.decorations.left + m.decorations.right - m.invisible.left - m.invisible.right;
    const int decorationsHeight = m.decorations.top + m.decorations.bottom - m.invisible.top - m.invisible.bottom;
    int width = std::max(frame.width() - decorationsWidth, 1), height = std::max(frame.height() - decorationsHeight, 1);
    if (hints && (hints->flags & XCB_ICCCM_SIZE_HINT_P_RESIZE_INC)) {
        // ICCCM: a size is the base size plus whole increments (the minimum size stands in
        // for a missing base size).
        const bool hasBase = hints->flags & XCB_ICCCM_SIZE_HINT_BASE_SIZE;
        const bool hasMin = hints->flags & XCB_ICCCM_SIZE_HINT_P_MIN_SIZE;
        const int baseWidth = hasBase ? hints->base_width : hasMin ? hints->min_width : 0;
        const int baseHeight = hasBase ? hints->base_height : hasMin ? hints->min_height : 0;
        if (hints->width_inc > 1 && width > baseWidth) width = baseWidth + (width - baseWidth) / hints->width_inc * hints->width_inc;
        if (hints->height_inc > 1 && height > baseHeight)
            height = baseHeight + (height - baseHeight) / hints->height_inc * hints->height_inc;
    }
    return QRect(frame.topLeft(), QSize(width + decorationsWidth, height + decorationsHeight));
}

QRectF X11WindowServer::attainableFrame(WindowId id, const QRectF& wanted)
{
    const auto window = xcb_window_t(id);
    const MarginRequests marginCookies = requestMargins(window);
    const auto hintsCookie = xcb_icccm_get_wm_normal_hints(x_.connection(), window);
    const Margins m = margins(marginCookies);
    xcb_size_hints_t hints{};
    const bool hasHints = xcb_icccm_get_wm_normal_hints_reply(x_.connection(), hintsCookie, &hints, nullptr);
    return PointScale::toPoints(attainable(PointScale::toPixels(wanted).toAlignedRect(), m, hasHints ? &hints : nullptr));
}

X11WindowServer::MoveResize X11WindowServer::moveResize(const QRect& frame, const Margins& m, bool isStatic)
{
    MoveResize request;
    request.isStatic = isStatic;
    request.width = std::max(frame.width() - m.decorations.left - m.decorations.right + m.invisible.left + m.invisible.right, 1);
    request.height = std::max(frame.height() - m.decorations.top - m.decorations.bottom + m.invisible.top + m.invisible.bottom, 1);
    request.x = frame.x() - m.invisible.left;
    request.y = frame.y() - m.invisible.top;
    // Static gravity places the client itself, north-west the decorations' corner.
    if (isStatic) {
        request.x += m.decorations.left;
        request.y += m.decorations.top;
    }
    return request;
}

void X11WindowServer::setFrame(WindowId id, const QRectF& frame)
{
    const auto window = xcb_window_t(id);
    const QRect r = PointScale::toPixels(frame).toAlignedRect().translated(X11Monitors(x_).primary().topLeft());
    const int serial = ++latestMove_[window];
    leaveMaximized(window, [this, window, r, serial] {
        if (latestMove_.value(window) == serial) place(window, r, serial);  // else a later move stands
    });
}

void X11WindowServer::place(xcb_window_t window, const QRect& r, int serial)
{
    xcb_connection_t* c = x_.connection();
    const MarginRequests marginCookies = requestMargins(window);
    const auto hintsCookie = xcb_icccm_get_wm_normal_hints(c, window);
    const Margins m = margins(marginCookies);
    xcb_size_hints_t hints{};
    const bool hasHints = xcb_icccm_get_wm_normal_hints_reply(c, hintsCookie, &hints, nullptr);
    // The position is given in the window's own gravity: a window manager may keep a
    // position given otherwise as if it were, and shift the window on its next resize.
    const bool isStatic = hasHints && (hints.flags & XCB_ICCCM_SIZE_HINT_P_WIN_GRAVITY) && hints.win_gravity == XCB_GRAVITY_STATIC;
    const MoveResize request = moveResize(r, m, isStatic);
    const QRect before = clientGeometry(window);
    const QRect wanted(r.x() + m.decorations.left - m.invisible.left, r.y() + m.decorations.top - m.invisible.top,
                       request.width, request.height);
    send(window, request);
    QTimer::singleShot(tiledCheckMs, &context_, [this, window, r, m, request, before, wanted, serial] {
        if (latestMove_.value(window) != serial) return;  // a later move stands
        latestMove_.remove(window);
        // A window manager may change a window's decorations after it answered (openbox
        // draws borders again a moment after un-maximizing): measured anew, the same frame.
        const Margins now = margins(requestMargins(window));
        if (now != m) {
            send(window, moveResize(r, now, request.isStatic));
            return;
        }
        // Moved, or already there: the window manager did what was asked.
        if (before.isNull() || before == wanted || clientGeometry(window) != before) return;
        freeAndSend(window, request);
    });
}

void X11WindowServer::freeAndSend(xcb_window_t window, const MoveResize& request)
{
    xcb_ewmh_connection_t* ewmh = x_.ewmh();
    xcb_ewmh_request_change_wm_state(ewmh, 0, window, XCB_EWMH_WM_STATE_ADD, ewmh->_NET_WM_STATE_MAXIMIZED_VERT,
                                     ewmh->_NET_WM_STATE_MAXIMIZED_HORZ, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
    x_.flush();
    afterSettling([this, window] { return hasState(window, x_.ewmh()->_NET_WM_STATE_MAXIMIZED_HORZ); }, maximizeAnswerMs,
                  [this, window, request] { leaveMaximized(window, [this, window, request] { send(window, request); }); });
}

void X11WindowServer::send(xcb_window_t window, const MoveResize& request)
{
    const auto flags = xcb_ewmh_moveresize_window_opt_flags_t(XCB_EWMH_MOVERESIZE_WINDOW_X | XCB_EWMH_MOVERESIZE_WINDOW_Y
                                                              | XCB_EWMH_MOVERESIZE_WINDOW_WIDTH
                                                              | XCB_EWMH_MOVERESIZE_WINDOW_HEIGHT);
    xcb_ewmh_request_moveresize_window(x_.ewmh(), 0, window, request.isStatic ? XCB_GRAVITY_STATIC : XCB_GRAVITY_NORTH_WEST,
                                       XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER, flags, uint32_t(request.x), uint32_t(request.y),
                                       uint32_t(request.width), uint32_t(request.height));
    x_.flush();
}

QRect X11WindowServer::clientGeometry(xcb_window_t window)
{
    xcb_connection_t* c = x_.connection();
    const auto geometryCookie = xcb_get_geometry(c, window);
    const auto positionCookie = xcb_translate_coordinates(c, window, x_.root(), 0, 0);
    auto* geometry = xcb_get_geometry_reply(c, geometryCookie, nullptr);
    auto* position = xcb_translate_coordinates_reply(c, positionCookie, nullptr);
    const QRect r = geometry && position ? QRect(position->dst_x, position->dst_y, geometry->width, geometry->height) : QRect();
    free(geometry);
    free(position);
    return r;
}

QList<quint32> X11WindowServer::cardinals(xcb_window_t window, xcb_atom_t property)
{
    xcb_connection_t* c = x_.connection();
    return Reply(xcb_get_property_reply(c, xcb_get_property(c, 0, window, property, XCB_ATOM_CARDINAL, 0, 64), nullptr))
        .cardinals();
}

bool X11WindowServer::isOnCurrentDesktop(WindowId id)
{
    xcb_ewmh_connection_t* e = x_.ewmh();
    const auto desktopCookie = xcb_ewmh_get_wm_desktop(e, xcb_window_t(id));
    const auto currentCookie = xcb_ewmh_get_current_desktop(e, 0);
    uint32_t desktop = 0, current = 0;
    const bool hasDesktop = xcb_ewmh_get_wm_desktop_reply(e, desktopCookie, &desktop, nullptr);
    const bool hasCurrent = xcb_ewmh_get_current_desktop_reply(e, currentCookie, &current, nullptr);
    // Sticky windows carry 0xFFFFFFFF; a window manager without desktops sets neither.
    return !hasDesktop || !hasCurrent || desktop == 0xFFFFFFFF || desktop == current;
}

QList<xcb_atom_t> X11WindowServer::atoms(xcb_window_t window, xcb_atom_t property)
{
    xcb_connection_t* c = x_.connection();
    Reply reply(xcb_get_property_reply(c, xcb_get_property(c, 0, window, property, XCB_ATOM_ATOM, 0, 64), nullptr));
    return reply.cardinals();
}

bool X11WindowServer::hasState(xcb_window_t window, xcb_atom_t state)
{
    return atoms(window, x_.ewmh()->_NET_WM_STATE).contains(state);
}

bool X11WindowServer::isStandard(WindowId id)
{
    xcb_ewmh_connection_t* e = x_.ewmh();
    const auto window = xcb_window_t(id);
    const xcb_atom_t known[] = {e->_NET_WM_WINDOW_TYPE_DESKTOP, e->_NET_WM_WINDOW_TYPE_DOCK, e->_NET_WM_WINDOW_TYPE_TOOLBAR,
                                e->_NET_WM_WINDOW_TYPE_MENU, e->_NET_WM_WINDOW_TYPE_UTILITY, e->_NET_WM_WINDOW_TYPE_SPLASH,
                                e->_NET_WM_WINDOW_TYPE_DIALOG, e->_NET_WM_WINDOW_TYPE_DROPDOWN_MENU,
                                e->_NET_WM_WINDOW_TYPE_POPUP_MENU, e->_NET_WM_WINDOW_TYPE_TOOLTIP,
                                e->_NET_WM_WINDOW_TYPE_NOTIFICATION, e->_NET_WM_WINDOW_TYPE_COMBO, e->_NET_WM_WINDOW_TYPE_DND,
                                e->_NET_WM_WINDOW_TYPE_NORMAL};
    // The first type the window manager knows is the one it uses.
    for (xcb_atom_t type : atoms(window, e->_NET_WM_WINDOW_TYPE))
        if (std::find(std::begin(known), std::end(known), type) != std::end(known)) return type == e->_NET_WM_WINDOW_TYPE_NORMAL;
    // Without a type a window is normal, unless it is transient for another: a dialog.
    xcb_connection_t* c = x_.connection();
    Reply transient(xcb_get_property_reply(
        c, xcb_get_property(c, 0, window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 0, 1), nullptr));
    return transient.cardinals().isEmpty();
}

bool X11WindowServer::isMinimized(WindowId id) { return hasState(xcb_window_t(id), x_.ewmh()->_NET_WM_STATE_HIDDEN); }

bool X11WindowServer::isFullScreen(WindowId id) { return hasState(xcb_window_t(id), x_.ewmh()->_NET_WM_STATE_FULLSCREEN); }

xcb_window_t X11WindowServer::clientUnder(xcb_window_t window, int depth)
{
    // The window manager's frame holds the client, the one window with WM_STATE.
    xcb_connection_t* c = x_.connection();
    Reply state(xcb_get_property_reply(c, xcb_get_property(c, 0, window, wmState_, wmState_, 0, 1), nullptr));
    if (state.reply && state.reply->type == wmState_) return window;
    if (depth == 0) return XCB_NONE;
    auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr);
    if (!tree) return XCB_NONE;
    xcb_window_t found = XCB_NONE;
    const xcb_window_t* children = xcb_query_tree_children(tree);
    for (int i = xcb_query_tree_children_length(tree) - 1; i >= 0 && !found; --i) found = clientUnder(children[i], depth - 1);
    free(tree);
    return found;
}

xcb_window_t X11WindowServer::topLevelAt(int x, int y)
{
    xcb_connection_t* c = x_.connection();
    auto* hit = xcb_translate_coordinates_reply(c, xcb_translate_coordinates(c, x_.root(), x_.root(), x, y), nullptr);
    const xcb_window_t top = hit ? hit->child : xcb_window_t(XCB_NONE);
    free(hit);
    auto* attributes = top ? xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, top), nullptr) : nullptr;
    const bool inputOnly = attributes && attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    free(attributes);
    if (!inputOnly) return top;

    // A window manager moving a window covers the screen with an input-only window of its
    // own (KWin does): the window the user sees under the pointer is the highest drawn one below.
    auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, x_.root()), nullptr);
    if (!tree) return XCB_NONE;
    const xcb_window_t* children = xcb_query_tree_children(tree);
    const int count = xcb_query_tree_children_length(tree);
    const int below = int(std::find(children, children + count, top) - children);
    QList<xcb_get_window_attributes_cookie_t> states;
    QList<xcb_get_geometry_cookie_t> geometries;
    for (int i = 0; i < below; ++i) {
        states << xcb_get_window_attributes(c, children[i]);
        geometries << xcb_get_geometry(c, children[i]);
    }
    xcb_window_t found = XCB_NONE;
    for (int i = below - 1; i >= 0; --i) {
        auto* state = xcb_get_window_attributes_reply(c, states[i], nullptr);
        auto* geometry = xcb_get_geometry_reply(c, geometries[i], nullptr);
        const bool drawn = state && state->map_state == XCB_MAP_STATE_VIEWABLE && state->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
        const int border = geometry ? 2 * geometry->border_width : 0;
        if (!found && drawn && geometry && QRect(geometry->x, geometry->y, geometry->width + border, geometry->height + border).contains(x, y))
            found = children[i];
        free(state);
        free(geometry);
    }
    free(tree);
    return found;
}

std::optional<WindowRef> X11WindowServer::windowAt(const QPointF& point)
{
    const QPoint origin = X11Monitors(x_).primary().topLeft();
    const QPointF pixel = PointScale::toPixels(point);
    const int x = int(std::floor(pixel.x())) + origin.x(), y = int(std::floor(pixel.y())) + origin.y();
    const xcb_window_t top = topLevelAt(x, y);
    if (!top) return std::nullopt;
    const xcb_window_t client = clientUnder(top, 3);
    if (!client) return std::nullopt;
    uint32_t pid = 0;
    xcb_ewmh_get_wm_pid_reply(x_.ewmh(), xcb_ewmh_get_wm_pid(x_.ewmh(), client), &pid, nullptr);
    return WindowRef{client, qint64(pid)};
}

QList<xcb_window_t> X11WindowServer::clients(bool stacking)
{
    xcb_ewmh_connection_t* e = x_.ewmh();
    xcb_ewmh_get_windows_reply_t list;
    const auto cookie = stacking ? xcb_ewmh_get_client_list_stacking(e, 0) : xcb_ewmh_get_client_list(e, 0);
    if (!xcb_ewmh_get_windows_reply(e, cookie, &list, nullptr)) return {};
    QList<xcb_window_t> windows(list.windows, list.windows + list.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&list);
    return windows;
}

QList<qint64> X11WindowServer::pids(const QList<xcb_window_t>& windows)
{
    QList<xcb_get_property_cookie_t> cookies;
    for (xcb_window_t w : windows) cookies << xcb_ewmh_get_wm_pid(x_.ewmh(), w);
    QList<qint64> list;
    for (const auto& cookie : cookies) {
        uint32_t pid = 0;
        list << (xcb_ewmh_get_wm_pid_reply(x_.ewmh(), cookie, &pid, nullptr) ? qint64(pid) : 0);
    }
    return list;
}

QList<WindowId> X11WindowServer::windows(qint64 pid)
{
    const QList<xcb_window_t> all = clients(false);
    const QList<qint64> owners = pids(all);
    QList<WindowId> list;
    for (int i = 0; i < all.size(); ++i)
        if (owners[i] == pid) list << all[i];
    return list;
}

std::optional<WindowId> X11WindowServer::focusedWindow(qint64 pid)
{
    xcb_window_t active = XCB_NONE;
    if (!xcb_ewmh_get_active_window_reply(x_.ewmh(), xcb_ewmh_get_active_window(x_.ewmh(), 0), &active, nullptr) || !active)
        return std::nullopt;
    if (pids({active}).value(0) != pid) return std::nullopt;
    return active;
}

std::optional<WindowId> X11WindowServer::mainWindow(qint64 pid)
{
    const QList<xcb_window_t> stack = clients(true);
    const QList<qint64> owners = pids(stack);
    for (int i = stack.size() - 1; i >= 0; --i)
        if (owners[i] == pid && !isMinimized(stack[i])) return stack[i];
    return std::nullopt;
}

QList<qint64> X11WindowServer::regularApplications()
{
    const QList<xcb_window_t> all = clients(false);
    const QList<qint64> owners = pids(all);
    QList<qint64> list;
    for (int i = 0; i < all.size(); ++i) {
        if (!owners[i] || list.contains(owners[i])) continue;
        if (isStandard(all[i]) && !hasState(all[i], x_.ewmh()->_NET_WM_STATE_SKIP_TASKBAR)) list << owners[i];
    }
    return list;
}

bool X11WindowServer::canShowTranslucentWindows()
{
    xcb_connection_t* c = x_.connection();
    auto* owner = xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, x_.ewmh()->_NET_WM_CM_Sn[0]), nullptr);
    const bool composited = owner && owner->owner != XCB_NONE;
    free(owner);
    return composited;
}

}  // namespace orlo::x11
