#include "platform/wayland/WaylandConnection.h"
#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <wayland-client.h>

Q_LOGGING_CATEGORY(lcWayland, "orlo.wayland", QtWarningMsg)

namespace orlo::wayland {

std::unique_ptr<WaylandConnection> WaylandConnection::open(QString* error)
{
    wl_display* display = wl_display_connect(nullptr);
    if (!display) {
        if (error)
            *error = QStringLiteral("cannot connect to the Wayland compositor \"%1\".")
                         .arg(qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0")));
        return nullptr;
    }
    std::unique_ptr<WaylandConnection> connection(new WaylandConnection(display));
    // The first answer lists the globals; the second, the seat's own events.
    if (!connection->roundtrip()) {
        if (error) *error = QStringLiteral("the Wayland compositor closed the connection at once.");
        return nullptr;
    }
    connection->seat_ = connection->bind<wl_seat>(&wl_seat_interface, 5);
    if (connection->seat_) {
        static const wl_seat_listener seatListener = {&onSeatCapabilities, [](void*, wl_seat*, const char*) {}};
        wl_seat_add_listener(connection->seat_, &seatListener, connection.get());
        connection->roundtrip();
    }
    return connection;
}

WaylandConnection::WaylandConnection(wl_display* display) : display_(display)
{
    static const wl_registry_listener registryListener = {&onGlobal, &onGlobalRemoved};
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &registryListener, this);
    notifier_ = std::make_unique<QSocketNotifier>(wl_display_get_fd(display_), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &WaylandConnection::dispatch);
    // Requests leave in one batch when the GUI thread has nothing else to do.
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &WaylandConnection::flush);
}

WaylandConnection::~WaylandConnection()
{
    notifier_.reset();
    if (seat_) wl_seat_destroy(seat_);
    wl_registry_destroy(registry_);
    wl_display_disconnect(display_);
}

void WaylandConnection::onGlobal(void* data, wl_registry*, uint32_t name, const char* interface, uint32_t version)
{
    auto* self = static_cast<WaylandConnection*>(data);
    const QByteArray key(interface);
    if (!self->globals_.contains(key)) self->globals_.insert(key, Global{name, version});
    qCDebug(lcWayland, "global %s version %u", interface, version);
}

void WaylandConnection::onGlobalRemoved(void* data, wl_registry*, uint32_t name)
{
    auto* self = static_cast<WaylandConnection*>(data);
    for (auto it = self->globals_.begin(); it != self->globals_.end(); ++it)
        if (it->name == name) {
            self->globals_.erase(it);
            return;
        }
}

void WaylandConnection::onSeatCapabilities(void* data, wl_seat*, uint32_t capabilities)
{
    auto* self = static_cast<WaylandConnection*>(data);
    if (capabilities == self->seatCapabilities_) return;
    self->seatCapabilities_ = capabilities;
    emit self->seatCapabilitiesChanged(capabilities);
}

void* WaylandConnection::bind(const wl_interface* interface, quint32 maxVersion)
{
    const auto it = globals_.constFind(QByteArray(interface->name));
    if (it == globals_.constEnd() || lost_) return nullptr;
    return wl_registry_bind(registry_, it->name, interface, std::min(it->version, maxVersion));
}

bool WaylandConnection::roundtrip()
{
    if (!lost_ && wl_display_roundtrip(display_) < 0) reportLost();
    return !lost_;
}

void WaylandConnection::dispatch()
{
    if (lost_) return;
    // Events another call read already wait in the queue; new ones are on the socket.
    if (wl_display_prepare_read(display_) == 0 && wl_display_read_events(display_) < 0) {
        reportLost();
        return;
    }
    if (wl_display_dispatch_pending(display_) < 0) reportLost();
}

void WaylandConnection::flush()
{
    if (lost_) return;
    if (wl_display_dispatch_pending(display_) < 0 || (wl_display_flush(display_) < 0 && errno != EAGAIN)) reportLost();
}

void WaylandConnection::reportLost()
{
    if (lost_) return;
    lost_ = true;
    notifier_->setEnabled(false);
    const int code = wl_display_get_error(display_);
    uint32_t protocolError = 0;
    const wl_interface* culprit = nullptr;
    if (code == EPROTO) protocolError = wl_display_get_protocol_error(display_, &culprit, nullptr);
    fprintf(stderr, "Orlo: the Wayland connection was lost (%s%s%s): what depends on it stops.\n", strerror(code),
            culprit ? ", refused by " : "", culprit ? culprit->name : "");
    Q_UNUSED(protocolError);
    emit lost();
}

}  // namespace orlo::wayland
