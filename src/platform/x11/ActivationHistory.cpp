#include "platform/x11/ActivationHistory.h"
#include "platform/x11/XConnection.h"
#include <QSet>

namespace orlo::x11 {

ActivationHistory::ActivationHistory(XConnection& x) : x_(x), activeAtom_(x.atom("_NET_ACTIVE_WINDOW"))
{
    listener_ = x_.addListener([this](xcb_generic_event_t* event) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return;
        auto* notify = reinterpret_cast<xcb_property_notify_event_t*>(event);
        if (notify->window == x_.root() && notify->atom == activeAtom_) readActive();
    });
    readActive();
}

ActivationHistory::~ActivationHistory() { x_.removeListener(listener_); }

void ActivationHistory::readActive()
{
    if (const auto window = x_.cardinal(x_.root(), activeAtom_, XCB_ATOM_WINDOW); window && *window) noteActive(*window);
}

void ActivationHistory::noteActive(xcb_window_t window)
{
    recent_.removeOne(window);
    recent_.prepend(window);
}

QList<xcb_window_t> ActivationHistory::arrange(const QList<xcb_window_t>& stackingTopFirst)
{
    const QSet<xcb_window_t> present(stackingTopFirst.cbegin(), stackingTopFirst.cend());
    recent_.removeIf([&](xcb_window_t w) { return !present.contains(w); });
    return byRecency(stackingTopFirst, recent_);
}

QList<xcb_window_t> ActivationHistory::byRecency(const QList<xcb_window_t>& stackingTopFirst, const QList<xcb_window_t>& recent)
{
    const QSet<xcb_window_t> stacked(stackingTopFirst.cbegin(), stackingTopFirst.cend());
    QList<xcb_window_t> order;
    order.reserve(stackingTopFirst.size());
    for (xcb_window_t w : recent)
        if (stacked.contains(w)) order << w;
    const QSet<xcb_window_t> used(order.cbegin(), order.cend());
    for (xcb_window_t w : stackingTopFirst)
        if (!used.contains(w)) order << w;
    return order;
}

}  // namespace orlo::x11
