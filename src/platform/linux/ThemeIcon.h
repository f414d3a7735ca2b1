#pragma once
#include <QIcon>
#include <QString>

namespace orlo {

// The icon a desktop entry names: an absolute path, or a name in the icon theme; where Qt
// knows no theme (no desktop environment), the places packages put their icons.
QIcon themeIcon(const QString& name);

}  // namespace orlo
