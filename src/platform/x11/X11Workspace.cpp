#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QCoreApplication>
#include <algorithm>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSettings>
#include <QStandardPaths>

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
        const auto window = x_.cardinal(x_.root(), active, XCB_ATOM_WINDOW);
        const auto front = frontmostApplication();
        if (front && window && *window) lastWindowOfPid_.insert(front->pid, *window);
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

QList<xcb_window_t> X11Workspace::clientWindows()
{
    const QByteArray list = x_.property(x_.root(), x_.atom("_NET_CLIENT_LIST_STACKING"), XCB_ATOM_WINDOW);
    const auto* ids = reinterpret_cast<const xcb_window_t*>(list.constData());
    QList<xcb_window_t> windows;
    for (qsizetype i = list.size() / qsizetype(sizeof(xcb_window_t)) - 1; i >= 0; --i) windows << ids[i];
    return windows;
}

void X11Workspace::activateApplication(const AppInfo& app)
{
    const QList<xcb_window_t> windows = clientWindows();
    xcb_window_t target = XCB_NONE;
    // The window the user last had in front, while it still exists; else the topmost one.
    if (const xcb_window_t last = lastWindowOfPid_.value(app.pid, XCB_NONE); last && windows.contains(last))
        target = last;
    for (qsizetype i = 0; !target && i < windows.size(); ++i) {
        const auto owner = applicationOf(windows[i]);
        if (owner && (app.pid ? owner->pid == app.pid : owner->bundleId == app.bundleId)) target = windows[i];
    }
    if (!target) return;
    // As a pager asks: the user chose this window, so no focus-stealing rules apply.
    xcb_ewmh_request_change_active_window(x_.ewmh(), 0, target, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER, XCB_CURRENT_TIME, XCB_NONE);
    x_.flush();
}

static QString desktopFilePath(const QString& bundleId)
{
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, QStringLiteral("applications/%1.desktop").arg(bundleId));
}

static QString desktopValue(QSettings& entry, const QString& key)
{
    // QSettings reads a value with commas as a list.
    const QVariant v = entry.value(QStringLiteral("Desktop Entry/") + key);
    return v.typeId() == QMetaType::QStringList ? v.toStringList().join(QStringLiteral(", ")) : v.toString();
}

static QIcon themeIcon(const QString& name)
{
    if (name.isEmpty()) return {};
    if (QDir::isAbsolutePath(name)) return QIcon(name);
    QIcon icon = QIcon::fromTheme(name);
    if (!icon.isNull()) return icon;
    // Without a desktop environment Qt may know no icon theme: look where packages put icons.
    for (const QString& dir : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        for (const char* size : {"48x48", "64x64", "128x128", "32x32", "256x256", "scalable"}) {
            for (const char* ext : {".png", ".svg"}) {
                const QString path = QStringLiteral("%1/icons/hicolor/%2/apps/%3%4").arg(dir, QLatin1String(size), name, QLatin1String(ext));
                if (QFileInfo::exists(path)) return QIcon(path);
            }
        }
        for (const char* ext : {".png", ".svg", ".xpm"}) {
            const QString path = QStringLiteral("%1/pixmaps/%2%3").arg(dir, name, QLatin1String(ext));
            if (QFileInfo::exists(path)) return QIcon(path);
        }
    }
    return {};
}

QIcon X11Workspace::windowIcon(xcb_window_t window)
{
    // _NET_WM_ICON: width, height, then ARGB pixels, for each size offered; take the one nearest 32.
    const QByteArray data = x_.property(window, x_.atom("_NET_WM_ICON"), XCB_ATOM_CARDINAL);
    const auto* words = reinterpret_cast<const quint32*>(data.constData());
    const qsizetype count = data.size() / 4;
    QImage best;
    for (qsizetype i = 0; i + 2 <= count;) {
        const quint32 w = words[i], h = words[i + 1];
        if (!w || !h || w > 1024 || h > 1024 || i + 2 + qsizetype(w) * h > count) break;
        if (best.isNull() || qAbs(int(w) - 32) < qAbs(best.width() - 32)) {
            best = QImage(int(w), int(h), QImage::Format_ARGB32);
            for (quint32 y = 0; y < h; ++y)
                for (quint32 x = 0; x < w; ++x) best.setPixel(int(x), int(y), words[i + 2 + y * w + x]);
        }
        i += 2 + qsizetype(w) * h;
    }
    return best.isNull() ? QIcon() : QIcon(QPixmap::fromImage(best));
}

QIcon X11Workspace::applicationIcon(const QString& bundleId)
{
    if (bundleId.isEmpty()) return {};
    if (const QString path = desktopFilePath(bundleId); !path.isEmpty()) {
        QSettings entry(path, QSettings::IniFormat);
        if (QIcon icon = themeIcon(desktopValue(entry, QStringLiteral("Icon"))); !icon.isNull()) return icon;
    }
    for (xcb_window_t window : clientWindows()) {
        const auto owner = applicationOf(window);
        if (owner && owner->bundleId == bundleId)
            if (QIcon icon = windowIcon(window); !icon.isNull()) return icon;
    }
    return {};
}

QString X11Workspace::applicationsFolder()
{
    // The system's folder, where most applications are, rather than the user's own.
    const QStringList dirs = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (auto it = dirs.rbegin(); it != dirs.rend(); ++it)
        if (QFileInfo(*it + QStringLiteral("/applications")).isDir()) return *it + QStringLiteral("/applications");
    return QDir::homePath();
}

std::optional<AppInfo> X11Workspace::applicationAt(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.suffix() != QLatin1String("desktop")) return std::nullopt;
    QSettings entry(path, QSettings::IniFormat);
    AppInfo app;
    app.bundleId = file.completeBaseName();
    app.name = desktopValue(entry, QStringLiteral("Name"));
    if (app.name.isEmpty()) app.name = app.bundleId;
    return app;
}

QList<AppInfo> X11Workspace::runningApplications()
{
    QList<AppInfo> apps;
    for (xcb_window_t window : clientWindows()) {
        const auto app = applicationOf(window);
        if (!app || app->pid < 1) continue;
        if (std::none_of(apps.cbegin(), apps.cend(), [&](const AppInfo& a) { return a.pid == app->pid; })) apps << *app;
    }
    return apps;
}

bool X11Workspace::closeWindows(qint64 pid)
{
    bool any = false;
    for (xcb_window_t window : clientWindows()) {
        if (x_.cardinal(window, x_.atom("_NET_WM_PID")) != quint32(pid)) continue;
        xcb_ewmh_request_close_window(x_.ewmh(), 0, window, XCB_CURRENT_TIME, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
        any = true;
    }
    x_.flush();
    return any;
}

}  // namespace orlo::x11
