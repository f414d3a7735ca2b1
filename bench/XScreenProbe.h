#pragma once
// A benchmark's own view of an X screen: it presses keys through XTEST, and waits for the
// first large paint (DAMAGE on the root window), a grabbed key press or a change of the
// active window.
#include "XTestKeyboard.h"
#include <QElapsedTimer>
#include <algorithm>
#include <functional>
#include <optional>
#include <poll.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

// Watches the screen and the active window from a connection of its own, and presses keys.
class XScreenProbe : public XTestKeyboard {
public:
    explicit XScreenProbe(const QString& display) : XTestKeyboard(display)
    {
        const quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(c_, root_, XCB_CW_EVENT_MASK, &mask);
        auto* version = xcb_damage_query_version_reply(c_, xcb_damage_query_version(c_, 1, 1), nullptr);
        free(version);
        damageEvent_ = xcb_get_extension_data(c_, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
        const xcb_damage_damage_t damage = xcb_generate_id(c_);
        xcb_damage_create(c_, damage, root_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        auto* atom = xcb_intern_atom_reply(c_, xcb_intern_atom(c_, 0, 18, "_NET_ACTIVE_WINDOW"), nullptr);
        activeAtom_ = atom ? atom->atom : XCB_NONE;
        free(atom);
        xcb_flush(c_);
    }
    xcb_window_t active()
    {
        auto* reply = xcb_get_property_reply(c_, xcb_get_property(c_, 0, root_, activeAtom_, XCB_ATOM_WINDOW, 0, 1), nullptr);
        xcb_window_t w = reply && xcb_get_property_value_length(reply) == 4 ? *static_cast<xcb_window_t*>(xcb_get_property_value(reply)) : 0;
        free(reply);
        return w;
    }
    // Alt goes down and Tab is tapped (`onTab` runs while Tab is down): the milliseconds from
    // the Tab press to the first large paint, or nothing when nothing was painted. Alt is
    // left down for the caller to let go.
    std::optional<double> altTabToPaint(const std::function<void()>& onTab = {})
    {
        const xcb_keycode_t alt = keycode(0xffe9), tab = keycode(0xff09);
        key(alt, true);
        QElapsedTimer clock;
        clock.start();
        key(tab, true);
        if (onTab) onTab();
        key(tab, false);
        if (!waitForPaint()) return std::nullopt;
        return clock.nsecsElapsed() / 1e6;
    }
    // Drops every event that has arrived, after the screen has been still for a while.
    void settle(int quietMs = 60)
    {
        QElapsedTimer quiet;
        quiet.start();
        while (quiet.elapsed() < quietMs) {
            if (next(5)) quiet.restart();
        }
    }
    // Sleeps until a large damage rectangle, a grabbed key press or an active-window change
    // arrives (whichever is asked for); false on time-out.
    bool waitForPaint() { return waitFor([this](xcb_generic_event_t* e) { return isLargeDamage(e); }); }
    bool waitForKeyPress() { return waitFor([](xcb_generic_event_t* e) { return (e->response_type & 0x7f) == XCB_KEY_PRESS; }); }
    bool waitForActiveChange(xcb_window_t from)
    {
        return waitFor([&](xcb_generic_event_t* e) {
            if ((e->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
            auto* p = reinterpret_cast<xcb_property_notify_event_t*>(e);
            return p->atom == activeAtom_ && active() != from && active() != XCB_NONE;
        });
    }

private:
    static constexpr int TimeoutMs = 3000;
    bool isLargeDamage(xcb_generic_event_t* e) const
    {
        if ((e->response_type & 0x7f) != damageEvent_) return false;
        auto* d = reinterpret_cast<xcb_damage_notify_event_t*>(e);
        return d->area.width >= 150 && d->area.height >= 60;
    }
    template <typename Test> bool waitFor(Test test)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < TimeoutMs) {
            xcb_generic_event_t* e = next(int(std::max<qint64>(1, TimeoutMs - clock.elapsed())));
            if (!e) continue;
            const bool hit = test(e);
            free(e);
            if (hit) return true;
        }
        return false;
    }
    xcb_generic_event_t* next(int waitMs)
    {
        if (xcb_generic_event_t* e = xcb_poll_for_event(c_)) return e;
        pollfd fd{xcb_get_file_descriptor(c_), POLLIN, 0};
        poll(&fd, 1, waitMs);
        return xcb_poll_for_event(c_);
    }

    xcb_atom_t activeAtom_;
    quint8 damageEvent_ = 0;
};
