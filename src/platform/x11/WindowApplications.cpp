#include "platform/x11/WindowApplications.h"
#include "platform/linux/SandboxedApp.h"
#include "platform/linux/ThemeIcon.h"
#include "platform/x11/XConnection.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QStandardPaths>
#include <QSysInfo>
#include <xcb/res.h>

namespace orlo::x11 {

namespace {
QString sandboxOf(qint64 pid)
{
    QFile cgroup(QStringLiteral("/proc/%1/cgroup").arg(pid));
    return cgroup.open(QIODevice::ReadOnly) ? sandboxedAppId(cgroup.read(64 * 1024)) : QString();
}
}  // namespace

WindowApplications::WindowApplications(XConnection& x) : x_(x)
{
    // Client ids by process need version 1.2 of the X-Resource extension.
    auto* version = x_.hasExtension("X-Resource")
        ? xcb_res_query_version_reply(x_.connection(), xcb_res_query_version(x_.connection(), 1, 2), nullptr)
        : nullptr;
    serverKnowsClients_ = version && (version->server_major > 1 || (version->server_major == 1 && version->server_minor >= 2));
    free(version);
}

std::optional<qint64> WindowApplications::owningPid(xcb_window_t window)
{
    if (serverKnowsClients_) {
        // Asked for the process alone, the server answers with nothing else; it knows no
        // process for a client over the network.
        const xcb_res_client_id_spec_t client{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        auto* reply = xcb_res_query_client_ids_reply(x_.connection(), xcb_res_query_client_ids(x_.connection(), 1, &client), nullptr);
        if (reply) {
            std::optional<qint64> pid;
            for (auto it = xcb_res_query_client_ids_ids_iterator(reply); it.rem; xcb_res_client_id_value_next(&it))
                if (it.data->length >= 4 && *xcb_res_client_id_value_value(it.data) > 0) pid = *xcb_res_client_id_value_value(it.data);
            free(reply);
            return pid;
        }
    }
    // An older server: the window's own word, unless it comes from another machine.
    const QByteArray machine = x_.property(window, XCB_ATOM_WM_CLIENT_MACHINE);
    if (!machine.isEmpty() && QString::fromLatin1(machine) != QSysInfo::machineHostName()) return std::nullopt;
    const auto pid = x_.cardinal(window, x_.atom("_NET_WM_PID"));
    return pid && *pid ? std::optional<qint64>(*pid) : std::nullopt;
}

std::optional<AppInfo> WindowApplications::applicationOf(xcb_window_t window)
{
    const QList<QByteArray> wmClass = x_.property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0');
    const QString instance = QString::fromLatin1(wmClass.value(0));
    const QString className = QString::fromLatin1(wmClass.value(1));
    const QString gtkId = QString::fromUtf8(x_.property(window, x_.atom("_GTK_APPLICATION_ID")));
    const auto pid = owningPid(window);
    const QString sandbox = pid ? sandboxOf(*pid) : QString();
    if (className.isEmpty() && instance.isEmpty() && gtkId.isEmpty() && !pid) return std::nullopt;

    AppInfo app;
    app.pid = pid.value_or(0);
    const QStringList hints{gtkId, sandbox, className, instance};
    if (const auto* entry = entries_.find(hints)) {
        app.bundleId = entry->id;
        app.name = entry->name;
    } else {
        for (const QString& hint : hints)
            if (app.bundleId.isEmpty()) app.bundleId = hint;
        app.name = !className.isEmpty() ? className : app.bundleId;
    }
    return app;
}

QIcon WindowApplications::windowIcon(xcb_window_t window)
{
    // _NET_WM_ICON: width, height, then ARGB pixels, for each size offered. Every size goes
    // into the icon, which draws the one nearest what is asked for.
    const QByteArray data = x_.property(window, x_.atom("_NET_WM_ICON"), XCB_ATOM_CARDINAL);
    const auto* words = reinterpret_cast<const quint32*>(data.constData());
    const qsizetype count = data.size() / 4;
    QIcon icon;
    for (qsizetype i = 0; i + 2 <= count;) {
        const quint32 w = words[i], h = words[i + 1];
        if (!w || !h || w > 1024 || h > 1024 || i + 2 + qsizetype(w) * h > count) break;
        QImage image(reinterpret_cast<const uchar*>(words + i + 2), int(w), int(h), int(w) * 4, QImage::Format_ARGB32);
        icon.addPixmap(QPixmap::fromImage(image.copy()));
        i += 2 + qsizetype(w) * h;
    }
    return icon;
}

QIcon WindowApplications::applicationIcon(const QString& bundleId)
{
    if (bundleId.isEmpty()) return {};
    if (const auto* entry = entries_.byId(bundleId))
        if (QIcon icon = themeIcon(entry->icon); !icon.isNull()) return icon;
    for (xcb_window_t window : x_.clientWindows()) {
        const auto owner = applicationOf(window);
        if (owner && owner->bundleId == bundleId)
            if (QIcon icon = windowIcon(window); !icon.isNull()) return icon;
    }
    return {};
}

std::optional<AppInfo> WindowApplications::applicationAt(const QString& path) { return DesktopEntries::applicationAt(path); }

}  // namespace orlo::x11
