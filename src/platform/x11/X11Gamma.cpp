#include "platform/x11/X11Gamma.h"
#include "platform/x11/Edid.h"
#include "platform/x11/XConnection.h"
#include <algorithm>
#include <cstdlib>

namespace orlo::x11 {

static QString displayName()
{
    const QString name = qEnvironmentVariable("DISPLAY");
    return name.isEmpty() ? QStringLiteral(":0") : name;
}

X11Gamma::X11Gamma(XConnection& x, const QString& recoveryPath, QObject* parent)
    : Gamma(parent), x_(x), recovery_(recoveryPath, displayName())
{
    recover();
    xcb_randr_select_input(x_.connection(), x_.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    x_.flush();
    // One change of the layout arrives as several notifications: act once they settle.
    settle_.setSingleShot(true);
    settle_.setInterval(150);
    connect(&settle_, &QTimer::timeout, this, &Gamma::displaysChanged);
    const xcb_query_extension_reply_t* randr = xcb_get_extension_data(x_.connection(), &xcb_randr_id);
    const quint8 base = randr && randr->present ? randr->first_event : 0;
    listener_ = x_.addListener([this, base](xcb_generic_event_t* event) {
        const quint8 type = event->response_type & 0x7f;
        if (base && (type == base + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == base + XCB_RANDR_NOTIFY)) settle_.start();
    });
}

X11Gamma::~X11Gamma() { x_.removeListener(listener_); }

void X11Gamma::recover()
{
    const auto left = recovery_.load();
    for (auto it = left.cbegin(); it != left.cend(); ++it) {
        const auto now = read(it.key());
        if (now && *now == it->applied) write(it.key(), it->original);
    }
    recovery_.remove();
}

static QByteArray outputEdid(xcb_connection_t* c, xcb_randr_output_t output, xcb_atom_t edidAtom)
{
    auto* reply = xcb_randr_get_output_property_reply(
        c, xcb_randr_get_output_property(c, output, edidAtom, XCB_ATOM_INTEGER, 0, 256, 0, 0), nullptr);
    QByteArray data;
    if (reply && reply->format == 8)
        data = QByteArray(reinterpret_cast<const char*>(xcb_randr_get_output_property_data(reply)),
                          xcb_randr_get_output_property_data_length(reply));
    free(reply);
    return data;
}

QList<GammaDisplay> X11Gamma::displays()
{
    xcb_connection_t* c = x_.connection();
    auto* resources = xcb_randr_get_screen_resources_current_reply(c, xcb_randr_get_screen_resources_current(c, x_.root()), nullptr);
    if (!resources) return {};
    auto* primaryReply = xcb_randr_get_output_primary_reply(c, xcb_randr_get_output_primary(c, x_.root()), nullptr);
    const xcb_randr_output_t primary = primaryReply ? primaryReply->output : XCB_NONE;
    free(primaryReply);
    const xcb_atom_t edidAtom = x_.atom("EDID");

    const int count = xcb_randr_get_screen_resources_current_outputs_length(resources);
    const xcb_randr_output_t* outputs = xcb_randr_get_screen_resources_current_outputs(resources);
    std::vector<xcb_randr_get_output_info_cookie_t> cookies;
    for (int i = 0; i < count; ++i) cookies.push_back(xcb_randr_get_output_info(c, outputs[i], resources->config_timestamp));

    QList<GammaDisplay> list;
    for (int i = 0; i < count; ++i) {
        auto* info = xcb_randr_get_output_info_reply(c, cookies[i], nullptr);
        if (!info) continue;
        const bool shown = info->connection == XCB_RANDR_CONNECTION_CONNECTED && info->crtc != XCB_NONE;
        const bool known = std::any_of(list.cbegin(), list.cend(), [&](const GammaDisplay& d) { return d.id == info->crtc; });
        if (shown && !known) {
            const QString outputName = QString::fromUtf8(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info)),
                                                         xcb_randr_get_output_info_name_length(info));
            GammaDisplay display{info->crtc, outputName, QStringLiteral("output-") + outputName, outputs[i] == primary};
            if (const auto edid = Edid::parse(outputEdid(c, outputs[i], edidAtom))) {
                display.key = edid->key();
                if (!edid->monitorName.isEmpty()) display.name = edid->monitorName;
            }
            if (display.isMain) list.prepend(display);
            else list << display;
        }
        free(info);
    }
    free(resources);
    if (!list.isEmpty() && !list.first().isMain) list.first().isMain = true;
    return list;
}

int X11Gamma::capacity(quint32 display)
{
    auto* reply = xcb_randr_get_crtc_gamma_size_reply(x_.connection(), xcb_randr_get_crtc_gamma_size(x_.connection(), display), nullptr);
    const int size = reply ? reply->size : 0;
    free(reply);
    return size;
}

std::optional<GammaTables> X11Gamma::read(quint32 display)
{
    auto* reply = xcb_randr_get_crtc_gamma_reply(x_.connection(), xcb_randr_get_crtc_gamma(x_.connection(), display), nullptr);
    if (!reply || !reply->size) {
        free(reply);
        return std::nullopt;
    }
    auto table = [&](const quint16* words) {
        QVector<float> t(reply->size);
        for (int i = 0; i < reply->size; ++i) t[i] = float(words[i]) / 65535.0f;
        return t;
    };
    GammaTables tables{table(xcb_randr_get_crtc_gamma_red(reply)), table(xcb_randr_get_crtc_gamma_green(reply)),
                       table(xcb_randr_get_crtc_gamma_blue(reply))};
    free(reply);
    return tables;
}

bool X11Gamma::write(quint32 crtc, const GammaTables& tables)
{
    const int size = int(tables.red.size());
    if (!size || tables.green.size() != size || tables.blue.size() != size) return false;
    auto words = [](const QVector<float>& t) {
        std::vector<quint16> w(t.size());
        for (qsizetype i = 0; i < t.size(); ++i) w[i] = quint16(qBound(0.0f, t[i], 1.0f) * 65535.0f + 0.5f);
        return w;
    };
    const auto r = words(tables.red), g = words(tables.green), b = words(tables.blue);
    xcb_generic_error_t* error = xcb_request_check(
        x_.connection(), xcb_randr_set_crtc_gamma_checked(x_.connection(), crtc, quint16(size), r.data(), g.data(), b.data()));
    free(error);
    return !error;
}

bool X11Gamma::set(quint32 display, const GammaTables& tables)
{
    if (!changes_.contains(display)) {
        const auto original = read(display);
        if (!original) return false;
        changes_.insert(display, {*original, *original});
    }
    // The file first: a crash right after the change must find it.
    changes_[display].applied = tables;
    recovery_.save(changes_);
    return write(display, tables);
}

void X11Gamma::restoreAll()
{
    for (auto it = changes_.cbegin(); it != changes_.cend(); ++it) write(it.key(), it->original);
    changes_.clear();
    recovery_.remove();
}

}  // namespace orlo::x11
