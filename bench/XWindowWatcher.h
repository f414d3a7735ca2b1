#pragma once
// A window of another program watched from a benchmark's own X connection: its geometry,
// waiting for it to stand at a frame, and for a grabbed key.
#include "VirtualSession.h"
#include "XTestKeyboard.h"
#include <QElapsedTimer>
#include <QRect>
#include <algorithm>
#include <poll.h>

class XWindowWatcher : public XTestKeyboard {
public:
    XWindowWatcher(const QString& display, xcb_window_t window) : XTestKeyboard(display), window_(window)
    {
        const quint32 mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(c_, window_, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(c_);
    }

    QRect geometry()
    {
        const auto g = xcb_get_geometry(c_, window_);
        const auto t = xcb_translate_coordinates(c_, window_, root_, 0, 0);
        auto* gr = xcb_get_geometry_reply(c_, g, nullptr);
        auto* tr = xcb_translate_coordinates_reply(c_, t, nullptr);
        const QRect r = gr && tr ? QRect(tr->dst_x, tr->dst_y, gr->width, gr->height) : QRect();
        free(gr);
        free(tr);
        return r;
    }

    // Sleeps on the connection until the window stands at `target`; false on time-out.
    bool waitFor(const QRect& target)
    {
        QElapsedTimer clock;
        clock.start();
        while (geometry() != target) {
            const qint64 left = timeoutMs_ - clock.elapsed();
            if (left <= 0) return false;
            pollfd fd{xcb_get_file_descriptor(c_), POLLIN, 0};
            poll(&fd, 1, int(std::min<qint64>(left, 5)));
            while (xcb_generic_event_t* e = xcb_poll_for_event(c_)) free(e);
        }
        return true;
    }

    // Waits until the window stops moving and returns where it stands.
    QRect settle()
    {
        QRect last = geometry();
        for (int still = 0; still < 10;) {
            orlo::testing::VirtualSession::waitFor([] { return false; }, 20);
            const QRect now = geometry();
            still = now == last ? still + 1 : 0;
            last = now;
        }
        return last;
    }

    // Sleeps on the connection until a grabbed key is pressed.
    bool waitForKeyPress()
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs_) {
            while (xcb_generic_event_t* e = xcb_poll_for_event(c_)) {
                const bool press = (e->response_type & 0x7f) == XCB_KEY_PRESS;
                free(e);
                if (press) return true;
            }
            pollfd fd{xcb_get_file_descriptor(c_), POLLIN, 0};
            poll(&fd, 1, 5);
        }
        return false;
    }

private:
    static constexpr int timeoutMs_ = 2000;
    xcb_window_t window_;
};
