#include "platform/x11/XConnection.h"
#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <X11/Xlib.h>
#include <xcb/xcb_keysyms.h>
// xkb.h names a struct member "explicit".
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace orlo::x11 {

std::unique_ptr<XConnection> XConnection::open(const char* display, QString* error)
{
    int screenNumber = 0;
    xcb_connection_t* c = xcb_connect(display, &screenNumber);
    if (!c || xcb_connection_has_error(c)) {
        if (c) xcb_disconnect(c);
        if (error) *error = QStringLiteral("cannot connect to the X display %1").arg(QString::fromLocal8Bit(display ? display : getenv("DISPLAY")));
        return nullptr;
    }
    auto it = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (int i = 0; i < screenNumber && it.rem; ++i) xcb_screen_next(&it);
    std::unique_ptr<XConnection> connection(new XConnection(c, it.data));
    connection->displayName_ = display ? QByteArray(display) : QByteArray();
    connection->watchKeymap(display);
    return connection;
}

XConnection::XConnection(xcb_connection_t* c, xcb_screen_t* screen) : c_(c), screen_(screen)
{
    xcb_ewmh_init_atoms_replies(&ewmh_, xcb_ewmh_init_atoms(c_, &ewmh_), nullptr);
    // The window manager announces the active window, the client lists and the desktops in
    // properties of the root window.
    const quint32 rootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c_, screen_->root, XCB_CW_EVENT_MASK, &rootEvents);
    // Held keys repeat as presses only, without a release between them, so that a repeat
    // can be told from a new press.
    free(xcb_xkb_use_extension_reply(c_, xcb_xkb_use_extension(c_, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr));
    free(xcb_xkb_per_client_flags_reply(
        c_, xcb_xkb_per_client_flags(c_, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
                                     XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0),
        nullptr));
    notifier_ = new QSocketNotifier(xcb_get_file_descriptor(c_), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &XConnection::drain);
    // Replies read on the way may leave events queued inside xcb with nothing left on the
    // socket: look at the queue each time the event loop is about to sleep.
    if (auto* dispatcher = QAbstractEventDispatcher::instance(thread()))
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &XConnection::drainQueued);
}

XConnection::~XConnection()
{
    if (xlib_) XCloseDisplay(xlib_);
    if (watch_) xcb_disconnect(watch_);
    xcb_ewmh_connection_wipe(&ewmh_);
    xcb_disconnect(c_);
}

xcb_atom_t XConnection::atom(const char* name)
{
    const QByteArray key(name);
    if (auto it = atoms_.constFind(key); it != atoms_.constEnd()) return *it;
    auto* reply = xcb_intern_atom_reply(c_, xcb_intern_atom(c_, 0, key.size(), name), nullptr);
    const xcb_atom_t a = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    free(reply);
    atoms_.insert(key, a);
    return a;
}

Display* XConnection::xlib()
{
    if (!xlibTried_) {
        xlibTried_ = true;
        xlib_ = XOpenDisplay(displayName_.isEmpty() ? nullptr : displayName_.constData());
    }
    return xlib_;
}

QList<xcb_window_t> XConnection::clientWindows()
{
    // A window manager that keeps no stacking list still lists its clients, oldest first:
    // the newest is then taken as the topmost.
    for (const xcb_atom_t list : {ewmh_._NET_CLIENT_LIST_STACKING, ewmh_._NET_CLIENT_LIST}) {
        const QByteArray ids = property(root(), list, XCB_ATOM_WINDOW);
        if (ids.isEmpty()) continue;
        QList<xcb_window_t> windows(ids.size() / qsizetype(sizeof(xcb_window_t)));
        memcpy(windows.data(), ids.constData(), windows.size() * sizeof(xcb_window_t));
        std::reverse(windows.begin(), windows.end());
        return windows;
    }
    return {};
}

int XConnection::addListener(Listener listener)
{
    listeners_.emplace_back(nextListener_, std::move(listener));
    return nextListener_++;
}

void XConnection::removeListener(int id)
{
    std::erase_if(listeners_, [id](const auto& l) { return l.first == id; });
}

void XConnection::drain()
{
    xcb_flush(c_);
    while (xcb_generic_event_t* event = xcb_poll_for_event(c_)) {
        dispatch(event);
        free(event);
    }
    xcb_flush(c_);
}

void XConnection::drainQueued()
{
    xcb_flush(c_);
    while (xcb_generic_event_t* event = xcb_poll_for_queued_event(c_)) {
        dispatch(event);
        free(event);
    }
}

void XConnection::dispatch(xcb_generic_event_t* event)
{
    const quint8 type = event->response_type & 0x7f;
    if (type == XCB_MAPPING_NOTIFY) {
        if (reinterpret_cast<xcb_mapping_notify_event_t*>(event)->request != XCB_MAPPING_POINTER) {
            masks_.reset();
            emit keyboardMappingChanged();
        }
        return;
    }
    if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE || type == XCB_BUTTON_PRESS || type == XCB_BUTTON_RELEASE)
        lastUserTime_ = reinterpret_cast<xcb_key_press_event_t*>(event)->time;
    // Copy: a listener may add or remove listeners.
    const auto listeners = listeners_;
    for (const auto& [id, listener] : listeners) listener(event);
}

void XConnection::watchKeymap(const char* display)
{
    // Having said it speaks XKB, this client hears of keymap changes (setxkbmap, another
    // keyboard) and of layout group switches only through XKB's own notifications. They
    // are asked for on a connection of their own: on the shared one they would come
    // between a key tap's frozen keyboard and its answer.
    watch_ = xcb_connect(display, nullptr);
    if (xcb_connection_has_error(watch_)) return;
    free(xcb_xkb_use_extension_reply(watch_, xcb_xkb_use_extension(watch_, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr));
    const xcb_query_extension_reply_t* xkb = xcb_get_extension_data(watch_, &xcb_xkb_id);
    if (!xkb || !xkb->present) return;
    const quint8 xkbEvent = xkb->first_event;
    const quint16 keymapEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    xcb_xkb_select_events_details_t details{};
    details.affectState = XCB_XKB_STATE_PART_GROUP_STATE;
    details.stateDetails = XCB_XKB_STATE_PART_GROUP_STATE;
    xcb_xkb_select_events_aux(watch_, XCB_XKB_ID_USE_CORE_KBD, keymapEvents | XCB_XKB_EVENT_TYPE_STATE_NOTIFY, 0,
                              keymapEvents, 0xff, 0xff, &details);
    xcb_flush(watch_);
    keymap_ = keymapSignature();
    auto* notifier = new QSocketNotifier(xcb_get_file_descriptor(watch_), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, xkbEvent] {
        while (xcb_generic_event_t* event = xcb_poll_for_event(watch_)) {
            if ((event->response_type & 0x7f) == xkbEvent) {
                // The byte after the event code names the XKB event.
                const quint8 xkbType = reinterpret_cast<const quint8*>(event)[1];
                if (xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY || xkbType == XCB_XKB_MAP_NOTIFY) keymapChangedSoon();
                if (xkbType == XCB_XKB_STATE_NOTIFY) {
                    auto* state = reinterpret_cast<xcb_xkb_state_notify_event_t*>(event);
                    if ((state->changed & XCB_XKB_STATE_PART_GROUP_STATE) && state->group != group_) {
                        group_ = state->group;
                        emit layoutGroupChanged();
                    }
                }
            }
            free(event);
        }
    });
}

void XConnection::keymapChangedSoon()
{
    // One keymap change arrives as several notifications: answer them once.
    if (keymapChangePending_) return;
    keymapChangePending_ = true;
    QTimer::singleShot(0, this, [this] {
        keymapChangePending_ = false;
        // XKB also speaks up when input moves to another keyboard device with the same keys
        // (a press through XTEST after one on the real keyboard): that changes nothing here.
        const QByteArray now = keymapSignature();
        if (now == keymap_) return;
        keymap_ = now;
        emit keymapChanged();
    });
}

QByteArray XConnection::keymapSignature()
{
    // Asked on the watching connection: a round trip on the shared one could come between
    // a key tap's frozen keyboard and its answer.
    xcb_connection_t* c = watch_;
    if (!c) return {};
    const xcb_setup_t* setup = xcb_get_setup(c);
    const auto keysCookie =
        xcb_get_keyboard_mapping(c, setup->min_keycode, setup->max_keycode - setup->min_keycode + 1);
    const auto modifiersCookie = xcb_get_modifier_mapping(c);
    auto* keys = xcb_get_keyboard_mapping_reply(c, keysCookie, nullptr);
    auto* modifiers = xcb_get_modifier_mapping_reply(c, modifiersCookie, nullptr);
    QByteArray signature;
    if (keys)
        signature.append(reinterpret_cast<const char*>(xcb_get_keyboard_mapping_keysyms(keys)),
                         xcb_get_keyboard_mapping_keysyms_length(keys) * int(sizeof(xcb_keysym_t)));
    if (modifiers)
        signature.append(reinterpret_cast<const char*>(xcb_get_modifier_mapping_keycodes(modifiers)),
                         xcb_get_modifier_mapping_keycodes_length(modifiers));
    free(keys);
    free(modifiers);
    return signature;
}

bool XConnection::hasExtension(const char* name)
{
    auto* reply = xcb_query_extension_reply(c_, xcb_query_extension(c_, strlen(name), name), nullptr);
    const bool present = reply && reply->present;
    free(reply);
    return present;
}

ModifierMasks XConnection::modifierMasks()
{
    if (masks_) return *masks_;
    ModifierMasks masks;
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(c_);
    auto* reply = xcb_get_modifier_mapping_reply(c_, xcb_get_modifier_mapping(c_), nullptr);
    if (reply && symbols) {
        const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(reply);
        const int perMod = reply->keycodes_per_modifier;
        bool altFound = false, superFound = false, numFound = false;
        for (int mod = 3; mod < 8; ++mod) {  // Mod1 .. Mod5
            for (int k = 0; k < perMod; ++k) {
                const xcb_keycode_t code = codes[mod * perMod + k];
                if (!code) continue;
                for (int col = 0; col < 4; ++col) {
                    const xcb_keysym_t sym = xcb_key_symbols_get_keysym(symbols, code, col);
                    const quint16 bit = quint16(1 << mod);
                    if (!altFound && (sym == 0xffe9 || sym == 0xffea)) { masks.alt = bit; altFound = true; }
                    if (!superFound && (sym == 0xffeb || sym == 0xffec)) { masks.super = bit; superFound = true; }
                    if (!numFound && sym == 0xff7f) { masks.numLock = bit; numFound = true; }
                }
            }
        }
    }
    free(reply);
    if (symbols) xcb_key_symbols_free(symbols);
    masks_ = masks;
    return masks;
}

std::optional<quint32> XConnection::cardinal(xcb_window_t window, xcb_atom_t property, xcb_atom_t type)
{
    auto* reply = xcb_get_property_reply(c_, xcb_get_property(c_, 0, window, property, type, 0, 1), nullptr);
    std::optional<quint32> value;
    if (reply && reply->format == 32 && xcb_get_property_value_length(reply) >= 4)
        value = *static_cast<quint32*>(xcb_get_property_value(reply));
    free(reply);
    return value;
}

QByteArray XConnection::property(xcb_window_t window, xcb_atom_t property, xcb_atom_t type)
{
    auto* reply = xcb_get_property_reply(c_, xcb_get_property(c_, 0, window, property, type, 0, 1 << 16), nullptr);
    QByteArray value;
    if (reply) value = QByteArray(static_cast<const char*>(xcb_get_property_value(reply)), xcb_get_property_value_length(reply));
    free(reply);
    return value;
}

}  // namespace orlo::x11
