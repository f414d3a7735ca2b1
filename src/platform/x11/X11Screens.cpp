#include "platform/x11/X11Screens.h"
#include "platform/x11/XConnection.h"
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <cstdlib>
#include <xcb/randr.h>

namespace orlo::x11 {

X11Screens::X11Screens(XConnection& x, QObject* parent) : Screens(parent), x_(x)
{
    auto* app = qGuiApp;
    connect(app, &QGuiApplication::screenAdded, this, &Screens::changed);
    connect(app, &QGuiApplication::screenRemoved, this, &Screens::changed);
    connect(app, &QGuiApplication::primaryScreenChanged, this, &Screens::changed);
}

QRectF X11Screens::toScreenCoordinates(const QRect& r, const QRect& primary)
{
    return QRectF(r.x() - primary.x(), (primary.y() + primary.height()) - (r.y() + r.height()), r.width(), r.height());
}

quint32 X11Screens::displayId(const QString& name)
{
    auto* reply = xcb_randr_get_monitors_reply(x_.connection(), xcb_randr_get_monitors(x_.connection(), x_.root(), 1), nullptr);
    quint32 id = 0;
    if (reply) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(reply); it.rem && !id; xcb_randr_monitor_info_next(&it)) {
            auto* name_reply = xcb_get_atom_name_reply(x_.connection(), xcb_get_atom_name(x_.connection(), it.data->name), nullptr);
            const QString monitorName = name_reply
                ? QString::fromLatin1(xcb_get_atom_name_name(name_reply), xcb_get_atom_name_name_length(name_reply))
                : QString();
            free(name_reply);
            if (monitorName == name && xcb_randr_monitor_info_outputs_length(it.data) > 0)
                id = xcb_randr_monitor_info_outputs(it.data)[0];
        }
        free(reply);
    }
    // A monitor without an output of its own (a virtual one) is known by its name.
    return id ? id : quint32(qHash(name));
}

QList<ScreenInfo> X11Screens::screens()
{
    QList<ScreenInfo> out;
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return out;
    QList<QScreen*> all = QGuiApplication::screens();
    all.removeAll(primary);
    all.prepend(primary);
    static const QRegularExpression panel(QStringLiteral("^(eDP|LVDS|DSI)"), QRegularExpression::CaseInsensitiveOption);
    for (QScreen* screen : all) {
        ScreenInfo info;
        info.name = screen->name();
        info.frame = toScreenCoordinates(screen->geometry(), primary->geometry());
        info.visibleFrame = toScreenCoordinates(screen->availableGeometry(), primary->geometry());
        info.builtIn = panel.match(info.name).hasMatch();
        info.displayId = displayId(info.name);
        out << info;
    }
    return out;
}

}  // namespace orlo::x11
