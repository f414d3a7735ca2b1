#pragma once
#include "platform/KeyboardLayout.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

namespace orlo::x11 {

class XConnection;

// Key characters from the server's XKB keymap, in the layout group currently in use.
class X11KeyboardLayout : public KeyboardLayout {
    Q_OBJECT
public:
    explicit X11KeyboardLayout(XConnection& x);
    ~X11KeyboardLayout() override;
    std::optional<QString> character(quint32 keyCode) override;
    std::optional<KeyEvent> keyEvent(const QKeyEvent& event) override;
    // What a key types in the state of a core key event.
    QString text(xcb_keycode_t key, quint16 state);

private:
    xkb_keymap* keymap();

    XConnection& x_;
    xkb_context* context_;
    xkb_keymap* keymap_ = nullptr;
    int device_ = -1;
};

}  // namespace orlo::x11
