#pragma once
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

class QSocketNotifier;
struct _XDisplay;

namespace orlo::x11 {

// The X modifier bits that stand for Alt, Super and Num Lock on this server.
struct ModifierMasks {
    quint16 alt = XCB_MOD_MASK_1;
    quint16 super = XCB_MOD_MASK_4;
    quint16 numLock = XCB_MOD_MASK_2;
};

// Orlo's own connection to the X server, shared by the X11 ports. Events are read in the
// Qt event loop and handed to every listener.
class XConnection : public QObject {
    Q_OBJECT
public:
    static std::unique_ptr<XConnection> open(const char* display, QString* error);
    ~XConnection() override;

    xcb_connection_t* connection() const { return c_; }
    xcb_window_t root() const { return screen_->root; }
    xcb_screen_t* screen() const { return screen_; }
    xcb_ewmh_connection_t* ewmh() { return &ewmh_; }
    xcb_atom_t atom(const char* name);

    using Listener = std::function<void(xcb_generic_event_t*)>;
    int addListener(Listener listener);
    void removeListener(int id);

    ModifierMasks modifierMasks();
    bool hasExtension(const char* name);

    // Property reads; empty results when the window or property is missing.
    std::optional<quint32> cardinal(xcb_window_t window, xcb_atom_t property, xcb_atom_t type = XCB_ATOM_CARDINAL);
    QByteArray property(xcb_window_t window, xcb_atom_t property, xcb_atom_t type = XCB_GET_PROPERTY_TYPE_ANY);

    // An Xlib connection to the same server, opened on first use, for the little that only
    // Xlib knows (the character sets of COMPOUND_TEXT); null when it cannot be opened.
    _XDisplay* xlib();

    // The time of the last key or button event Orlo's connection received, for requests
    // made on the user's behalf; CurrentTime before the first.
    xcb_timestamp_t lastUserTime() const { return lastUserTime_; }

    // The window manager's client windows, topmost first.
    QList<xcb_window_t> clientWindows();

    void flush() { xcb_flush(c_); }

    // Whether a keyboard tap of Orlo's holds the keyboard; key presses that reach Orlo
    // then belong to the tap, not to the hot keys.
    bool keyboardHeldByTap() const { return tapHolds_ > 0; }
    void setTapHolding(bool holds) { tapHolds_ += holds ? 1 : -1; }

signals:
    // The keyboard mapping changed: key grabs must be made again.
    void keyboardMappingChanged();
    // The keymap changed in XKB's words (setxkbmap, another keyboard): keys may produce
    // other characters and the modifier bits may have moved. Clients that speak XKB, as
    // this connection does, hear of it only this way.
    void keymapChanged();
    // Another group of the keyboard layout is in use.
    void layoutGroupChanged();

private:
    XConnection(xcb_connection_t* c, xcb_screen_t* screen);
    void drain();
    void drainQueued();
    void dispatch(xcb_generic_event_t* event);
    void watchKeymap(const char* display);
    void keymapChangedSoon();
    // The keysyms of every key and the modifier map, to tell a real keymap change.
    QByteArray keymapSignature();

    xcb_connection_t* c_;
    xcb_screen_t* screen_;
    xcb_ewmh_connection_t ewmh_{};
    QSocketNotifier* notifier_ = nullptr;
    QHash<QByteArray, xcb_atom_t> atoms_;
    std::vector<std::pair<int, Listener>> listeners_;
    int nextListener_ = 1;
    std::optional<ModifierMasks> masks_;
    int tapHolds_ = 0;
    xcb_connection_t* watch_ = nullptr;
    QByteArray displayName_;
    _XDisplay* xlib_ = nullptr;
    bool xlibTried_ = false;
    xcb_timestamp_t lastUserTime_ = XCB_CURRENT_TIME;
    quint8 group_ = 0;
    bool keymapChangePending_ = false;
    QByteArray keymap_;
};

}  // namespace orlo::x11
