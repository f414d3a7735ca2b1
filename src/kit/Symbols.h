#pragma once
#include <QColor>
#include <QIcon>
#include <QString>

namespace orlo {

// Icons by symbol name, drawn from Orlo's bundled monochrome SVGs in the given colour
// (the palette's text colour when none is given).
QIcon symbolIcon(const QString& name, const QColor& color = QColor());
QPixmap symbolPixmap(const QString& name, int size, const QColor& color = QColor());

}  // namespace orlo
