#pragma once
// A connection of a benchmark's own to the X server that presses keys through XTEST and
// grabs keys as a hot-key daemon does.
#include <QString>
#include <QtGlobal>
#include <cstdlib>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

class XTestKeyboard {
public:
    explicit XTestKeyboard(const QString& display)
    {
        c_ = xcb_connect(display.toLocal8Bit().constData(), nullptr);
        root_ = xcb_setup_roots_iterator(xcb_get_setup(c_)).data->root;
        symbols_ = xcb_key_symbols_alloc(c_);
    }
    ~XTestKeyboard()
    {
        xcb_key_symbols_free(symbols_);
        xcb_disconnect(c_);
    }
    XTestKeyboard(const XTestKeyboard&) = delete;
    XTestKeyboard& operator=(const XTestKeyboard&) = delete;

    xcb_keycode_t keycode(xcb_keysym_t sym)
    {
        xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols_, sym);
        const xcb_keycode_t code = codes ? codes[0] : 0;
        free(codes);
        return code;
    }
    void key(xcb_keycode_t code, bool down)
    {
        xcb_test_fake_input(c_, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(c_);
    }
    // A passive grab on the root window; false when another client holds the combination.
    bool grab(xcb_keycode_t code, quint16 modifiers)
    {
        auto cookie = xcb_grab_key_checked(c_, 1, root_, modifiers, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        xcb_generic_error_t* error = xcb_request_check(c_, cookie);
        free(error);
        return !error;
    }
    void ungrab(xcb_keycode_t code, quint16 modifiers)
    {
        xcb_ungrab_key(c_, code, root_, modifiers);
        xcb_flush(c_);
    }

protected:
    xcb_connection_t* c_;
    xcb_window_t root_;

private:
    xcb_key_symbols_t* symbols_;
};
