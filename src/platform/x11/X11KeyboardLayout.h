#pragma once
#include "platform/KeyboardLayout.h"

struct xkb_context;
struct xkb_keymap;

namespace orlo::x11 {

class XConnection;

// Key characters from the server's XKB keymap, in the layout group currently in use.
class X11KeyboardLayout : public KeyboardLayout {
    Q_OBJECT
public:
    explicit X11KeyboardLayout(XConnection& x);
    ~X11KeyboardLayout() override;
    std::optional<QString> character(quint32 keyCode) override;
    std::optional<QString> typedCharacter(quint32 keyCode, quint64 modifierFlags) override;
    std::optional<KeyEvent> keyEvent(const QKeyEvent& event) override;

private:
    xkb_keymap* keymap();

    XConnection& x_;
    xkb_context* context_;
    xkb_keymap* keymap_ = nullptr;
    int device_ = -1;
};

}  // namespace orlo::x11
