#pragma once
#include "platform/HotKeyService.h"
#include "platform/x11/KeyGrab.h"
#include <QHash>
#include <QSet>
#include <optional>
#include <utility>

namespace orlo::x11 {

class XConnection;
class X11KeyboardLayout;

// Hot keys as passive grabs on the root window.
class X11HotKeyService : public HotKeyService {
    Q_OBJECT
public:
    X11HotKeyService(XConnection& x, X11KeyboardLayout& layout, QObject* parent = nullptr);
    ~X11HotKeyService() override;
    bool registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers) override;
    void unregisterHotKey(quint32 id) override;
    bool isHeldByAnotherApp(quint32 keyCode, quint32 carbonModifiers) override;

private:
    void onEvent(xcb_generic_event_t* event);
    void regrabAll();

    XConnection& x_;
    X11KeyboardLayout& layout_;
    KeyGrab grab_;
    int listener_;
    QHash<quint32, KeyCombo> combos_;
    QSet<xcb_keycode_t> down_;  // keys held, so that auto-repeat does not fire again
    // The hot key whose press began the server's hold on the keyboard, while its key is down.
    std::optional<std::pair<quint32, xcb_keycode_t>> holding_;
};

}  // namespace orlo::x11
