#include "platform/wayland/ClipboardDevice.h"
#include "platform/wayland/WaylandConnection.h"
#include "ext-data-control-v1-client-protocol.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"
#include <unistd.h>
#include <wayland-client.h>

namespace orlo::wayland {

namespace {

// The ext and the wlroots data-control protocols have the same requests and events under
// other names: one traits struct per protocol names its functions.
struct ExtProtocol {
    using Manager = ext_data_control_manager_v1;
    using Device = ext_data_control_device_v1;
    using Source = ext_data_control_source_v1;
    using Offer = ext_data_control_offer_v1;
    using DeviceListener = ext_data_control_device_v1_listener;
    using SourceListener = ext_data_control_source_v1_listener;
    using OfferListener = ext_data_control_offer_v1_listener;
    static const wl_interface* manager() { return &ext_data_control_manager_v1_interface; }
    static Device* device(Manager* m, wl_seat* seat) { return ext_data_control_manager_v1_get_data_device(m, seat); }
    static Source* source(Manager* m) { return ext_data_control_manager_v1_create_data_source(m); }
    static void listen(Device* d, const DeviceListener* l, void* data) { ext_data_control_device_v1_add_listener(d, l, data); }
    static void listen(Source* s, const SourceListener* l, void* data) { ext_data_control_source_v1_add_listener(s, l, data); }
    static void listen(Offer* o, const OfferListener* l, void* data) { ext_data_control_offer_v1_add_listener(o, l, data); }
    static void offer(Source* s, const char* type) { ext_data_control_source_v1_offer(s, type); }
    static void select(Device* d, Source* s) { ext_data_control_device_v1_set_selection(d, s); }
    static void receive(Offer* o, const char* type, int fd) { ext_data_control_offer_v1_receive(o, type, fd); }
    static void destroy(Manager* m) { ext_data_control_manager_v1_destroy(m); }
    static void destroy(Device* d) { ext_data_control_device_v1_destroy(d); }
    static void destroy(Source* s) { ext_data_control_source_v1_destroy(s); }
    static void destroy(Offer* o) { ext_data_control_offer_v1_destroy(o); }
};

struct WlrProtocol {
    using Manager = zwlr_data_control_manager_v1;
    using Device = zwlr_data_control_device_v1;
    using Source = zwlr_data_control_source_v1;
    using Offer = zwlr_data_control_offer_v1;
    using DeviceListener = zwlr_data_control_device_v1_listener;
    using SourceListener = zwlr_data_control_source_v1_listener;
    using OfferListener = zwlr_data_control_offer_v1_listener;
    static const wl_interface* manager() { return &zwlr_data_control_manager_v1_interface; }
    static Device* device(Manager* m, wl_seat* seat) { return zwlr_data_control_manager_v1_get_data_device(m, seat); }
    static Source* source(Manager* m) { return zwlr_data_control_manager_v1_create_data_source(m); }
    static void listen(Device* d, const DeviceListener* l, void* data) { zwlr_data_control_device_v1_add_listener(d, l, data); }
    static void listen(Source* s, const SourceListener* l, void* data) { zwlr_data_control_source_v1_add_listener(s, l, data); }
    static void listen(Offer* o, const OfferListener* l, void* data) { zwlr_data_control_offer_v1_add_listener(o, l, data); }
    static void offer(Source* s, const char* type) { zwlr_data_control_source_v1_offer(s, type); }
    static void select(Device* d, Source* s) { zwlr_data_control_device_v1_set_selection(d, s); }
    static void receive(Offer* o, const char* type, int fd) { zwlr_data_control_offer_v1_receive(o, type, fd); }
    static void destroy(Manager* m) { zwlr_data_control_manager_v1_destroy(m); }
    static void destroy(Device* d) { zwlr_data_control_device_v1_destroy(d); }
    static void destroy(Source* s) { zwlr_data_control_source_v1_destroy(s); }
    static void destroy(Offer* o) { zwlr_data_control_offer_v1_destroy(o); }
};

template <class P>
class DataControlOffer : public ClipboardDevice::Offer {
public:
    DataControlOffer(typename P::Offer* offer, WaylandConnection& connection) : offer_(offer), connection_(connection)
    {
        static const typename P::OfferListener listener = {&DataControlOffer::onType};
        P::listen(offer_, &listener, this);
    }
    ~DataControlOffer() override
    {
        if (!connection_.isLost()) P::destroy(offer_);
    }
    QStringList types() const override { return types_; }
    void receive(const QString& type, int fd) override
    {
        P::receive(offer_, type.toUtf8().constData(), fd);
        close(fd);
    }

private:
    static void onType(void* data, typename P::Offer*, const char* type)
    {
        static_cast<DataControlOffer*>(data)->types_ << QString::fromUtf8(type);
    }

    typename P::Offer* offer_;
    WaylandConnection& connection_;
    QStringList types_;
};

template <class P>
class DataControlDevice : public ClipboardDevice {
public:
    DataControlDevice(typename P::Manager* manager, WaylandConnection& connection)
        : manager_(manager), connection_(connection), device_(P::device(manager, connection.seat()))
    {
        static const typename P::DeviceListener listener = {&onOffer, &onSelection, &onFinished, &onPrimarySelection};
        P::listen(device_, &listener, this);
    }
    ~DataControlDevice() override
    {
        if (connection_.isLost()) return;
        if (source_) P::destroy(source_);
        if (device_) P::destroy(device_);
        P::destroy(manager_);
    }

    void setSelection(const QStringList& types) override
    {
        if (!device_ || connection_.isLost()) return;
        if (source_) P::destroy(source_);
        source_ = P::source(manager_);
        static const typename P::SourceListener listener = {&onSend, &onCancelled};
        P::listen(source_, &listener, this);
        for (const QString& type : types) P::offer(source_, type.toUtf8().constData());
        P::select(device_, source_);
        // The compositor announces the new selection to every clipboard manager, Orlo's
        // included, before it answers a request sent after it.
        if (echoUntil_) wl_callback_destroy(echoUntil_);
        echoUntil_ = wl_display_sync(connection_.display());
        static const wl_callback_listener done = {&onEchoOver};
        wl_callback_add_listener(echoUntil_, &done, this);
    }

private:
    static void onOffer(void* data, typename P::Device*, typename P::Offer* offer)
    {
        auto* self = static_cast<DataControlDevice*>(data);
        // Types arrive before the offer is named the selection (or the primary selection).
        self->pending_ = std::make_shared<DataControlOffer<P>>(offer, self->connection_);
    }
    static void onSelection(void* data, typename P::Device*, typename P::Offer* offer)
    {
        auto* self = static_cast<DataControlDevice*>(data);
        std::shared_ptr<Offer> selection = offer ? std::exchange(self->pending_, nullptr) : nullptr;
        emit self->selectionChanged(selection, self->echoUntil_ != nullptr);
    }
    static void onPrimarySelection(void* data, typename P::Device*, typename P::Offer* offer)
    {
        // The middle-click selection is not the clipboard: its offer is let go at once.
        if (offer) static_cast<DataControlDevice*>(data)->pending_.reset();
    }
    static void onFinished(void* data, typename P::Device*)
    {
        auto* self = static_cast<DataControlDevice*>(data);
        P::destroy(self->device_);
        self->device_ = nullptr;
    }
    static void onSend(void* data, typename P::Source*, const char* type, int32_t fd)
    {
        emit static_cast<DataControlDevice*>(data)->sendRequested(QString::fromUtf8(type), fd);
    }
    static void onCancelled(void* data, typename P::Source* source)
    {
        auto* self = static_cast<DataControlDevice*>(data);
        P::destroy(source);
        if (self->source_ == source) self->source_ = nullptr;
    }
    static void onEchoOver(void* data, wl_callback* callback, uint32_t)
    {
        auto* self = static_cast<DataControlDevice*>(data);
        wl_callback_destroy(callback);
        if (self->echoUntil_ == callback) self->echoUntil_ = nullptr;
    }

    typename P::Manager* manager_;
    WaylandConnection& connection_;
    typename P::Device* device_;
    typename P::Source* source_ = nullptr;
    std::shared_ptr<DataControlOffer<P>> pending_;
    wl_callback* echoUntil_ = nullptr;
};

template <class P>
std::unique_ptr<ClipboardDevice> createDevice(WaylandConnection& connection)
{
    auto* manager = connection.bind<typename P::Manager>(P::manager(), 1);
    if (!manager) return nullptr;
    return std::make_unique<DataControlDevice<P>>(manager, connection);
}

}  // namespace

std::unique_ptr<ClipboardDevice> ClipboardDevice::create(WaylandConnection& connection)
{
    if (!connection.seat()) return nullptr;
    if (auto device = createDevice<ExtProtocol>(connection)) return device;
    return createDevice<WlrProtocol>(connection);
}

}  // namespace orlo::wayland
