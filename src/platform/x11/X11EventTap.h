#pragma once
#include "platform/EventTapBackend.h"
#include "platform/x11/KeyGrab.h"
#include <QSet>
#include <QTimer>

namespace orlo::x11 {

class XConnection;
class X11KeyboardLayout;

// A keyboard tap over X key grabs: synchronous passive grabs of the watched keys (the
// handler's answer either swallows the key or replays it to the focused window), and an
// active keyboard grab while the tap sees every key. A watched key that another client holds
// makes enabling fail; grabs lost to a keyboard mapping change are reported as a disabled tap
// and made again when re-enabled.
class X11KeyTap : public QObject, public KeyTap {
    Q_OBJECT
public:
    X11KeyTap(XConnection& x, X11KeyboardLayout& layout, quint64 mask, EventTapBackend::Callback callback);
    ~X11KeyTap() override;
    bool setEnabled(bool enabled) override;
    void setWatchedKeys(const QList<KeyCombo>& keys) override;
    bool setSeesAllKeys(bool on) override;
    std::optional<quint64> modifierFlags() override;
    std::optional<bool> isKeyDown(quint32 keyCode) override;
    void releaseKeyboardNow() override;

private:
    void onEvent(xcb_generic_event_t* event);
    bool deliver(KeyEventType type, quint32 keyCode, quint64 flags, bool repeat, const QString& text = {});
    bool grabWatched();
    void ungrabWatched();
    void reportDisabledSoon();
    void updateHolding();

    XConnection& x_;
    X11KeyboardLayout& layout_;
    KeyGrab grab_;
    quint64 mask_;
    EventTapBackend::Callback callback_;
    int listener_;
    bool enabled_ = false;
    bool seesAll_ = false;
    bool activeGrab_ = false;
    bool holding_ = false;
    QList<KeyCombo> watched_;
    QList<KeyCombo> grabbed_;
    QSet<xcb_keycode_t> swallowedHeld_;  // swallowed watched keys: ours until released
    QSet<xcb_keycode_t> down_;
    QTimer retry_;
};

class X11EventTapBackend : public EventTapBackend {
public:
    X11EventTapBackend(XConnection& x, X11KeyboardLayout& layout) : x_(x), layout_(layout) {}
    std::unique_ptr<KeyTap> createTap(quint64 mask, Callback callback) override;

private:
    XConnection& x_;
    X11KeyboardLayout& layout_;
};

}  // namespace orlo::x11
