#pragma once
#include <QByteArray>
#include <QHash>
#include <QObject>
#include <memory>

struct wl_display;
struct wl_interface;
struct wl_registry;
struct wl_seat;
class QSocketNotifier;

namespace orlo::wayland {

// Orlo's own connection to the compositor, beside the one Qt keeps for Orlo's windows. It
// holds the registry of the compositor's globals and the seat, and dispatches events on the
// GUI thread as they arrive; requests are flushed before the event loop sleeps.
class WaylandConnection : public QObject {
    Q_OBJECT
public:
    // nullptr with a reason when the compositor cannot be reached.
    static std::unique_ptr<WaylandConnection> open(QString* error);
    ~WaylandConnection() override;

    wl_display* display() const { return display_; }
    wl_seat* seat() const { return seat_; }
    // WL_SEAT_CAPABILITY_* of the seat now: a seat without keyboards may not be asked for one.
    quint32 seatCapabilities() const { return seatCapabilities_; }
    // Whether the compositor offers a global of an interface, by its protocol name.
    bool offers(const QByteArray& interface) const { return globals_.contains(interface); }
    // Binds the compositor's global of an interface at its version, at most maxVersion;
    // nullptr when it offers none. The caller owns (and destroys) the result.
    void* bind(const wl_interface* interface, quint32 maxVersion);
    template <class T>
    T* bind(const wl_interface* interface, quint32 maxVersion)
    {
        return static_cast<T*>(bind(interface, maxVersion));
    }
    // Sends what is queued and waits until the compositor has handled it all, dispatching the
    // events that came meanwhile; false once the connection is lost.
    bool roundtrip();
    bool isLost() const { return lost_; }

signals:
    // The compositor closed the connection or refused a request: what needs it stops working.
    void lost();
    void seatCapabilitiesChanged(quint32 capabilities);

private:
    struct Global {
        quint32 name = 0;
        quint32 version = 0;
    };
    explicit WaylandConnection(wl_display* display);
    static void onGlobal(void* data, wl_registry*, uint32_t name, const char* interface, uint32_t version);
    static void onGlobalRemoved(void* data, wl_registry*, uint32_t name);
    static void onSeatCapabilities(void* data, wl_seat*, uint32_t capabilities);
    void dispatch();
    void flush();
    void reportLost();

    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    quint32 seatCapabilities_ = 0;
    QHash<QByteArray, Global> globals_;  // the first of each interface
    std::unique_ptr<QSocketNotifier> notifier_;
    bool lost_ = false;
};

}  // namespace orlo::wayland
