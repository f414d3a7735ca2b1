#include "platform/x11/X11MouseMonitor.h"
#include "platform/x11/PointScale.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/XConnection.h"
#include <xcb/xinput.h>

namespace orlo::x11 {

namespace {
constexpr quint32 leftButton = 1;
constexpr int pollMs = 15;
constexpr quint32 rawEvents = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
// Pointer motion is only of interest while the button is down: Orlo does not wake for every move.
constexpr quint32 rawEventsWhileDown = rawEvents | XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
}  // namespace

X11MouseMonitor::X11MouseMonitor(XConnection& x, QObject* parent) : MouseMonitor(parent), x_(x)
{
    poll_.setInterval(pollMs);
    connect(&poll_, &QTimer::timeout, this, &X11MouseMonitor::checkMotion);
}

X11MouseMonitor::~X11MouseMonitor() { stop(); }

void X11MouseMonitor::select(quint32 mask)
{
    struct {
        xcb_input_event_mask_t head;
        quint32 bits;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, mask};
    xcb_input_xi_select_events(x_.connection(), x_.root(), 1, &selection.head);
    x_.flush();
}

bool X11MouseMonitor::start()
{
    if (listener_) return true;
    xcb_connection_t* c = x_.connection();
    const xcb_query_extension_reply_t* ext = xcb_get_extension_data(c, &xcb_input_id);
    if (!ext || !ext->present) return false;
    // Raw events reach a client during other clients' grabs from version 2.1 on.
    auto* version = xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr);
    const bool recent = version && (version->major_version > 2 || (version->major_version == 2 && version->minor_version >= 1));
    free(version);
    if (!recent) return false;
    opcode_ = ext->major_opcode;
    listener_ = x_.addListener([this](xcb_generic_event_t* e) { onEvent(e); });
    select(rawEvents);
    return true;
}

void X11MouseMonitor::stop()
{
    if (!listener_) return;
    select(0);
    x_.removeListener(listener_);
    listener_ = 0;
    down_ = false;
    poll_.stop();
}

QPointF X11MouseMonitor::location()
{
    xcb_connection_t* c = x_.connection();
    const auto cookie = xcb_query_pointer(c, x_.root());
    const QRect primary = X11Monitors(x_).primary();
    auto* pointer = xcb_query_pointer_reply(c, cookie, nullptr);
    QPointF p;
    // The top-left corner of the pixel under the pointer, y up from the primary's bottom.
    if (pointer) p = PointScale::toPoints(QPointF(pointer->root_x - primary.x(), primary.y() + primary.height() - pointer->root_y));
    free(pointer);
    return p;
}

void X11MouseMonitor::onEvent(xcb_generic_event_t* event)
{
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC) return;
    auto* ge = reinterpret_cast<xcb_ge_generic_event_t*>(event);
    if (ge->extension != opcode_) return;
    auto* raw = reinterpret_cast<xcb_input_raw_button_press_event_t*>(event);
    switch (ge->event_type) {
    case XCB_INPUT_RAW_BUTTON_PRESS:
        if (down_ || logicalButton(raw->detail) != leftButton) return;
        downButton_ = raw->detail;
        down_ = true;
        select(rawEventsWhileDown);
        last_ = location();
        poll_.start();
        emit leftMouseDown(last_);
        break;
    case XCB_INPUT_RAW_MOTION:
        checkMotion();
        break;
    case XCB_INPUT_RAW_BUTTON_RELEASE:
        if (!down_ || raw->detail != downButton_) return;
        // A move just before the release counts: it may have reached a screen edge.
        checkMotion();
        poll_.stop();
        down_ = false;
        select(rawEvents);
        emit leftMouseUp(last_);
        break;
    default:
        break;
    }
}

quint32 X11MouseMonitor::logicalButton(quint32 physical)
{
    // Raw events name the physical button; a left-handed mapping makes the right one the
    // button that drags windows. The mapping is read at each press, so it is never stale.
    xcb_connection_t* c = x_.connection();
    auto* mapping = xcb_get_pointer_mapping_reply(c, xcb_get_pointer_mapping(c), nullptr);
    quint32 logical = physical;
    if (mapping && physical >= 1 && int(physical) <= xcb_get_pointer_mapping_map_length(mapping))
        logical = xcb_get_pointer_mapping_map(mapping)[physical - 1];
    free(mapping);
    return logical;
}

void X11MouseMonitor::checkMotion()
{
    if (!down_) return;
    const QPointF p = location();
    if (p == last_) return;
    last_ = p;
    emit leftMouseDragged(p);
}

}  // namespace orlo::x11
