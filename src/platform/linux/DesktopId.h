#pragma once
#include <QString>

namespace orlo {

// The name of Orlo's desktop entry, as the application told Qt
// (QGuiApplication::desktopFileName): its autostart entry, its notifications and its icon
// go by it. "orlo" when the application has not set one.
QString desktopId();

}  // namespace orlo
