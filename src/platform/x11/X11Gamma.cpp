#include "platform/x11/X11Gamma.h"
#include "platform/x11/Edid.h"
#include "platform/x11/XConnection.h"
#include <xcb/screensaver.h>
#include <algorithm>
#include <cstdlib>

namespace orlo::x11 {

static QString displayName()
{
    const QString name = qEnvironmentVariable("DISPLAY");
    return name.isEmpty() ? QStringLiteral(":0") : name;
}

X11Gamma::X11Gamma(XConnection& x, const QString& recoveryPath, QObject* parent) : Gamma(parent), x_(x)
{
    const GammaRecoveryFile file(recoveryPath, displayName());
    recover(file);
    writer_ = std::make_unique<X11GammaWriter>(x_.connection(), file);
    xcb_randr_select_input(x_.connection(), x_.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    watchScreenSaver();
    x_.flush();
    // One change of the layout arrives as several notifications: act once they settle.
    settle_.setSingleShot(true);
    settle_.setInterval(150);
    connect(&settle_, &QTimer::timeout, this, &Gamma::displaysChanged);
    connect(&wake_, &WakeSignals::woke, &settle_, qOverload<>(&QTimer::start));
    const xcb_query_extension_reply_t* randr = xcb_get_extension_data(x_.connection(), &xcb_randr_id);
    const quint8 randrBase = randr && randr->present ? randr->first_event : 0;
    const xcb_query_extension_reply_t* saver = xcb_get_extension_data(x_.connection(), &xcb_screensaver_id);
    const quint8 saverBase = saver && saver->present ? saver->first_event : 0;
    listener_ = x_.addListener([this, randrBase, saverBase](xcb_generic_event_t* event) {
        const quint8 type = event->response_type & 0x7f;
        if (randrBase && (type == randrBase + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == randrBase + XCB_RANDR_NOTIFY))
            settle_.start();
        if (saverBase && type == saverBase + XCB_SCREENSAVER_NOTIFY
            && reinterpret_cast<xcb_screensaver_notify_event_t*>(event)->state == XCB_SCREENSAVER_STATE_OFF)
            settle_.start();
    });
}

X11Gamma::~X11Gamma() { x_.removeListener(listener_); }

void X11Gamma::watchScreenSaver()
{
    if (!x_.hasExtension("MIT-SCREEN-SAVER")) return;
    xcb_screensaver_select_input(x_.connection(), x_.root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
}

void X11Gamma::recover(const GammaRecoveryFile& file)
{
    const auto left = file.load();
    if (left.isEmpty()) return;
    const QList<GammaDisplay> shown = displays();
    for (const GammaRecoveryFile::Change& change : left) {
        quint32 crtc = change.displayId;
        if (!change.key.isEmpty()) {
            const auto it = std::find_if(shown.cbegin(), shown.cend(), [&](const GammaDisplay& d) { return d.key == change.key; });
            crtc = it != shown.cend() ? it->id : 0;
        }
        // Tables that differ from Orlo's are another program's now: they stay.
        if (crtc && readCrtc(crtc) == change.applied) X11GammaWriter::writeNow(x_.connection(), crtc, change.original);
    }
    file.remove();
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
    if (auto queued = writer_->pending(display)) return queued;
    return readCrtc(display);
}

std::optional<GammaTables> X11Gamma::readCrtc(quint32 display)
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

// The tables as the CRTC keeps them: 16 bits an entry.
static GammaTables asKept(const GammaTables& tables)
{
    GammaTables kept = tables;
    for (QVector<float>* table : {&kept.red, &kept.green, &kept.blue})
        for (float& v : *table) v = float(quint16(qBound(0.0f, v, 1.0f) * 65535.0f + 0.5f)) / 65535.0f;
    return kept;
}

bool X11Gamma::set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original)
{
    const qsizetype size = tables.red.size();
    if (!size || tables.green.size() != size || tables.blue.size() != size) return false;
    const GammaTables kept = asKept(tables);
    if (kept == asKept(original)) changes_.remove(display.key);
    else changes_.insert(display.key, {display.key, display.id, asKept(original), kept});
    writer_->write(display.id, kept, changes_.values());
    return true;
}

void X11Gamma::forget(const GammaDisplay& display)
{
    if (changes_.remove(display.key)) writer_->save(changes_.values());
}

}  // namespace orlo::x11
