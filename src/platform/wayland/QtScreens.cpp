#include "platform/wayland/QtScreens.h"
#include "platform/Geometry.h"
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>

namespace orlo::wayland {

QtScreens::QtScreens(QObject* parent) : Screens(parent)
{
    auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, &Screens::changed);
        connect(screen, &QScreen::availableGeometryChanged, this, &Screens::changed);
    };
    for (QScreen* screen : QGuiApplication::screens()) watch(screen);
    connect(qApp, &QGuiApplication::screenAdded, this, [this, watch](QScreen* screen) {
        watch(screen);
        emit changed();
    });
    connect(qApp, &QGuiApplication::screenRemoved, this, &Screens::changed);
    connect(qApp, &QGuiApplication::primaryScreenChanged, this, &Screens::changed);
}

QList<ScreenInfo> QtScreens::screens()
{
    QList<QScreen*> all = QGuiApplication::screens();
    QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return {};
    all.removeOne(primary);
    all.prepend(primary);
    static const QRegularExpression panel(QStringLiteral("^(eDP|LVDS|DSI)"), QRegularExpression::CaseInsensitiveOption);
    // Screen coordinates count from the primary screen's bottom left corner.
    const QRect origin = primary->geometry();
    QList<ScreenInfo> out;
    for (QScreen* screen : all) {
        ScreenInfo info;
        info.name = screen->name();
        info.frame = flipped(QRectF(screen->geometry().translated(-origin.topLeft())), origin.height());
        info.visibleFrame = flipped(QRectF(screen->availableGeometry().translated(-origin.topLeft())), origin.height());
        info.builtIn = panel.match(info.name).hasMatch();
        info.displayId = quint32(qHash(info.name));
        out << info;
    }
    return out;
}

}  // namespace orlo::wayland
