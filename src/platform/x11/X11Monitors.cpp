#include "platform/x11/X11Monitors.h"
#include "platform/x11/XConnection.h"
#include <algorithm>

namespace orlo::x11 {

X11Monitors::X11Monitors(XConnection& x) : x_(x), cookie_(xcb_randr_get_monitors(x.connection(), x.root(), 1)) {}

X11Monitors::~X11Monitors()
{
    if (!monitors_) xcb_discard_reply(x_.connection(), cookie_.sequence);
}

const QList<X11Monitors::Monitor>& X11Monitors::read(bool withNames)
{
    if (monitors_) return *monitors_;
    xcb_connection_t* c = x_.connection();
    QList<Monitor> list;
    auto* reply = xcb_randr_get_monitors_reply(c, cookie_, nullptr);
    if (reply) {
        QList<xcb_get_atom_name_cookie_t> names;
        QList<QList<xcb_randr_get_output_info_cookie_t>> outputCookies;
        for (auto it = xcb_randr_get_monitors_monitors_iterator(reply); it.rem; xcb_randr_monitor_info_next(&it)) {
            Monitor m;
            m.geometry = QRect(it.data->x, it.data->y, it.data->width, it.data->height);
            m.primary = it.data->primary;
            const xcb_randr_output_t* outputs = xcb_randr_monitor_info_outputs(it.data);
            QList<xcb_randr_get_output_info_cookie_t> cookies;
            for (int i = 0; i < xcb_randr_monitor_info_outputs_length(it.data); ++i) {
                m.outputs << outputs[i];
                if (withNames) cookies << xcb_randr_get_output_info(c, outputs[i], XCB_CURRENT_TIME);
            }
            if (withNames) names << xcb_get_atom_name(c, it.data->name);
            outputCookies << cookies;
            list << m;
        }
        free(reply);
        for (int i = 0; i < names.size(); ++i) {
            if (auto* name = xcb_get_atom_name_reply(c, names[i], nullptr)) {
                list[i].name = QString::fromLatin1(xcb_get_atom_name_name(name), xcb_get_atom_name_name_length(name));
                free(name);
            }
            for (const auto& cookie : std::as_const(outputCookies[i])) {
                auto* info = xcb_randr_get_output_info_reply(c, cookie, nullptr);
                if (!info) continue;
                list[i].outputNames << QString::fromLatin1(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info)),
                                                           xcb_randr_get_output_info_name_length(info));
                free(info);
            }
        }
    }
    if (list.isEmpty()) {
        Monitor whole;
        whole.geometry = QRect(0, 0, x_.screen()->width_in_pixels, x_.screen()->height_in_pixels);
        whole.primary = true;
        list << whole;
    }
    std::stable_partition(list.begin(), list.end(), [](const Monitor& m) { return m.primary; });
    monitors_ = list;
    return *monitors_;
}

}  // namespace orlo::x11
