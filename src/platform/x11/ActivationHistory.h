#pragma once
#include <QList>
#include <QObject>
#include <xcb/xcb.h>

namespace orlo::x11 {

class XConnection;

// The order in which windows were last active, most recent first, kept from the window
// manager's _NET_ACTIVE_WINDOW. The stacking order is not that order: a window kept above
// stays on top while others are used, and with focus that follows the mouse the active
// window need not be raised at all.
class ActivationHistory : public QObject {
public:
    explicit ActivationHistory(XConnection& x);
    ~ActivationHistory() override;

    // The windows, most recently active first: those active since Orlo started in the order
    // of their use, then the others as they are stacked (the best guess for what came
    // before). Forgets windows that are gone.
    QList<xcb_window_t> arrange(const QList<xcb_window_t>& stackingTopFirst);
    void noteActive(xcb_window_t window);

    // The ordering itself, apart from the X connection.
    static QList<xcb_window_t> byRecency(const QList<xcb_window_t>& stackingTopFirst, const QList<xcb_window_t>& recent);

private:
    void readActive();

    XConnection& x_;
    xcb_atom_t activeAtom_;
    int listener_;
    QList<xcb_window_t> recent_;
};

}  // namespace orlo::x11
