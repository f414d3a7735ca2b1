#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QCoreApplication>

namespace orlo::x11 {

X11Workspace::X11Workspace(XConnection& x, QObject* parent) : Workspace(parent), x_(x)
{
    const quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(x_.connection(), x_.root(), XCB_CW_EVENT_MASK, &mask);
    x_.flush();
    const xcb_atom_t active = x_.atom("_NET_ACTIVE_WINDOW");
    listener_ = x_.addListener([this, active](xcb_generic_event_t* event) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return;
        auto* notify = reinterpret_cast<xcb_property_notify_event_t*>(event);
        if (notify->window != x_.root() || notify->atom != active) return;
        const auto front = frontmostApplication();
        if (!front || front == lastFront_) return;
        lastFront_ = front;
        emit applicationActivated(*front);
    });
    lastFront_ = frontmostApplication();
}

X11Workspace::~X11Workspace() { x_.removeListener(listener_); }

qint64 X11Workspace::ownPid() const { return QCoreApplication::applicationPid(); }

std::optional<AppInfo> X11Workspace::frontmostApplication()
{
    const auto window = x_.cardinal(x_.root(), x_.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    if (!window || !*window) return std::nullopt;
    return applicationOf(*window);
}

std::optional<AppInfo> X11Workspace::applicationOf(xcb_window_t window)
{
    const QByteArray wmClass = x_.property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    const QList<QByteArray> parts = wmClass.split('\0');
    const QString instance = QString::fromLocal8Bit(parts.value(0));
    const QString className = QString::fromLocal8Bit(parts.value(1));
    const QString gtkId = QString::fromUtf8(x_.property(window, x_.atom("_GTK_APPLICATION_ID")));
    const auto pid = x_.cardinal(window, x_.atom("_NET_WM_PID"));
    if (className.isEmpty() && instance.isEmpty() && gtkId.isEmpty() && !pid) return std::nullopt;

    AppInfo app;
    app.pid = pid.value_or(0);
    if (const auto* entry = entries_.find({gtkId, className, instance})) {
        app.bundleId = entry->id;
        app.name = entry->name;
    } else {
        app.bundleId = !gtkId.isEmpty() ? gtkId : (!className.isEmpty() ? className : instance);
        app.name = !className.isEmpty() ? className : app.bundleId;
    }
    return app;
}

}  // namespace orlo::x11
