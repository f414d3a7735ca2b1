#include "platform/wayland/ForeignToplevelCatalog.h"
#include "platform/wayland/WaylandConnection.h"
#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"
#include <QCoreApplication>
#include <QGuiApplication>
#include <algorithm>
#include <wayland-client.h>

namespace orlo::wayland {

namespace {
// The compositor tells no window's size: every window counts as one worth switching to.
const QRectF UnknownFrame(0, 0, 1 << 14, 1 << 14);

QByteArray bytesOf(const wl_array* array)
{
    return array ? QByteArray(static_cast<const char*>(array->data), qsizetype(array->size)) : QByteArray();
}
}  // namespace

const zwlr_foreign_toplevel_manager_v1_listener ForeignToplevelCatalog::managerListener = {
    .toplevel = [](void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
        static_cast<ForeignToplevelCatalog*>(data)->add(handle);
    },
    .finished = [](void* data, zwlr_foreign_toplevel_manager_v1* manager) {
        auto* self = static_cast<ForeignToplevelCatalog*>(data);
        zwlr_foreign_toplevel_manager_v1_destroy(manager);
        self->manager_ = nullptr;
    },
};

const zwlr_foreign_toplevel_handle_v1_listener ForeignToplevelCatalog::handleListener = {
    .title = [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* title) {
        static_cast<Toplevel*>(data)->pendingTitle = QString::fromUtf8(title);
    },
    .app_id = [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* appId) {
        static_cast<Toplevel*>(data)->pendingAppId = QString::fromUtf8(appId);
    },
    .output_enter = [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    .output_leave = [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    .state = [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* state) {
        static_cast<Toplevel*>(data)->pendingState = ToplevelState::decode(bytesOf(state));
    },
    .done = [](void* data, zwlr_foreign_toplevel_handle_v1*) {
        auto* toplevel = static_cast<Toplevel*>(data);
        toplevel->catalog->apply(*toplevel);
    },
    .closed = [](void* data, zwlr_foreign_toplevel_handle_v1*) {
        auto* toplevel = static_cast<Toplevel*>(data);
        toplevel->catalog->remove(*toplevel);
    },
    .parent = [](void* data, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1* parent) {
        static_cast<Toplevel*>(data)->pendingChild = parent != nullptr;
    },
};

std::unique_ptr<ForeignToplevelCatalog> ForeignToplevelCatalog::create(WaylandConnection& connection)
{
    if (!connection.seat()) return nullptr;
    auto* manager = connection.bind<zwlr_foreign_toplevel_manager_v1>(&zwlr_foreign_toplevel_manager_v1_interface, 3);
    if (!manager) return nullptr;
    std::unique_ptr<ForeignToplevelCatalog> catalog(new ForeignToplevelCatalog(connection, manager));
    // The windows that are open already.
    connection.roundtrip();
    return catalog;
}

ForeignToplevelCatalog::ForeignToplevelCatalog(WaylandConnection& connection, zwlr_foreign_toplevel_manager_v1* manager)
    : connection_(connection), manager_(manager)
{
    zwlr_foreign_toplevel_manager_v1_add_listener(manager_, &managerListener, this);
}

ForeignToplevelCatalog::~ForeignToplevelCatalog()
{
    if (connection_.isLost()) return;
    for (const auto& toplevel : toplevels_) zwlr_foreign_toplevel_handle_v1_destroy(toplevel->handle);
    // The compositor answers "stop" with "finished" later; nobody listens by then.
    if (manager_) {
        zwlr_foreign_toplevel_manager_v1_stop(manager_);
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(manager_));
    }
    wl_display_flush(connection_.display());
}

void ForeignToplevelCatalog::add(zwlr_foreign_toplevel_handle_v1* handle)
{
    auto toplevel = std::make_unique<Toplevel>();
    toplevel->catalog = this;
    toplevel->handle = handle;
    toplevel->number = nextNumber_++;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, toplevel.get());
    toplevels_.push_back(std::move(toplevel));
}

void ForeignToplevelCatalog::apply(Toplevel& toplevel)
{
    if (toplevel.pendingState.activated && !toplevel.state.activated) toplevel.activatedAt = ++activations_;
    toplevel.title = toplevel.pendingTitle;
    toplevel.appId = toplevel.pendingAppId;
    toplevel.state = toplevel.pendingState;
    toplevel.child = toplevel.pendingChild;
}

void ForeignToplevelCatalog::remove(Toplevel& toplevel)
{
    zwlr_foreign_toplevel_handle_v1_destroy(toplevel.handle);
    std::erase_if(toplevels_, [&](const auto& t) { return t.get() == &toplevel; });
}

std::vector<const ForeignToplevelCatalog::Toplevel*> ForeignToplevelCatalog::byRecency() const
{
    std::vector<const Toplevel*> list;
    for (const auto& toplevel : toplevels_) list.push_back(toplevel.get());
    std::stable_sort(list.begin(), list.end(), [](const Toplevel* a, const Toplevel* b) {
        if (a->activatedAt != b->activatedAt) return a->activatedAt > b->activatedAt;
        return a->number > b->number;
    });
    return list;
}

const ForeignToplevelCatalog::Toplevel* ForeignToplevelCatalog::find(WindowId number) const
{
    for (const auto& toplevel : toplevels_)
        if (toplevel->number == number) return toplevel.get();
    return nullptr;
}

RunningApp ForeignToplevelCatalog::applicationOf(const QString& appId)
{
    auto it = apps_.find(appId);
    if (it != apps_.end()) return *it;
    RunningApp app;
    // Orlo's own windows (the switcher's display among them) are never switched to.
    if (appId == QGuiApplication::desktopFileName())
        app.pid = QCoreApplication::applicationPid();
    else
        app.pid = -qint64(apps_.size() + 1);  // no process is known: one number per application
    if (const auto* entry = appId.isEmpty() ? nullptr : entries_.find({appId})) {
        app.bundleId = entry->id;
        app.name = entry->name;
    } else {
        app.bundleId = appId;
        app.name = appId;
    }
    app.regular = true;
    return *apps_.insert(appId, app);
}

QList<RunningApp> ForeignToplevelCatalog::runningApplications()
{
    QList<RunningApp> apps;
    for (const Toplevel* toplevel : byRecency()) {
        const RunningApp app = applicationOf(toplevel->appId);
        if (std::none_of(apps.begin(), apps.end(), [&](const RunningApp& a) { return a.pid == app.pid; })) apps << app;
    }
    return apps;
}

QList<ScreenWindow> ForeignToplevelCatalog::onScreenWindows()
{
    QList<ScreenWindow> list;
    for (const Toplevel* toplevel : byRecency())
        if (!toplevel->state.minimized)
            list << ScreenWindow{toplevel->number, applicationOf(toplevel->appId).pid, 0, UnknownFrame, 1.0, toplevel->title};
    return list;
}

std::optional<QList<AppWindow>> ForeignToplevelCatalog::applicationWindows(const RunningApp& app)
{
    QList<AppWindow> list;
    for (const Toplevel* toplevel : byRecency())
        if (applicationOf(toplevel->appId).pid == app.pid)
            list << AppWindow{toplevel->number, toplevel->number, toplevel->title, UnknownFrame, toplevel->state.minimized,
                              !toplevel->child};
    return list;
}

void ForeignToplevelCatalog::raise(WindowId element, bool unminimize)
{
    const Toplevel* toplevel = find(element);
    if (!toplevel || connection_.isLost()) return;
    if (unminimize && toplevel->state.minimized) zwlr_foreign_toplevel_handle_v1_unset_minimized(toplevel->handle);
    zwlr_foreign_toplevel_handle_v1_activate(toplevel->handle, connection_.seat());
    wl_display_flush(connection_.display());
}

void ForeignToplevelCatalog::activate(qint64 pid)
{
    for (const Toplevel* toplevel : byRecency())
        if (applicationOf(toplevel->appId).pid == pid && !toplevel->child) return raise(toplevel->number, true);
}

}  // namespace orlo::wayland
