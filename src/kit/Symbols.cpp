#include "kit/Symbols.h"
#include <QApplication>
#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

// Orlo's resources live in a static library: register them before the first use.
static void registerResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(orlo);
        return true;
    }();
    Q_UNUSED(done);
}

namespace orlo {

static QByteArray tintedSvg(const QString& name, const QColor& color)
{
    registerResources();
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) file.setFileName(QStringLiteral(":/icons/app.svg"));
    if (!file.isOpen() && !file.open(QIODevice::ReadOnly)) return {};
    QByteArray svg = file.readAll();
    const QByteArray hex = color.name().toLatin1();
    // The bundled icons are single-colour; repaint that colour.
    svg.replace("#2e3436", hex).replace("#2e3434", hex).replace("#222222", hex);
    return svg;
}

static QColor resolved(const QColor& color)
{
    return color.isValid() ? color : QApplication::palette().color(QPalette::WindowText);
}

QPixmap symbolPixmap(const QString& name, int size, const QColor& color)
{
    static QHash<QString, QPixmap> cache;
    const QColor c = resolved(color);
    const QString key = QStringLiteral("%1|%2|%3").arg(name, c.name()).arg(size);
    if (auto it = cache.constFind(key); it != cache.constEnd()) return *it;
    QSvgRenderer renderer(tintedSvg(name, c));
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    cache.insert(key, pixmap);
    return pixmap;
}

QIcon symbolIcon(const QString& name, const QColor& color)
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) icon.addPixmap(symbolPixmap(name, size, color));
    return icon;
}

}  // namespace orlo
