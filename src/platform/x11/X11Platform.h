#pragma once
#include "platform/Platform.h"

namespace orlo::x11 {

// Readies Qt for the X display; returns why it cannot be used, or an empty text.
QString prepareDisplay();
// The ports over X11, or nullptr with a reason.
std::unique_ptr<Platform> createPlatform(QString* error);

}  // namespace orlo::x11
