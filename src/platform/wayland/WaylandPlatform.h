#pragma once
#include "platform/Platform.h"

namespace orlo::wayland {

// Readies Qt for the Wayland compositor; returns why it cannot be reached, or an empty text.
QString prepareDisplay();
// The ports over the compositor's protocols, or nullptr with a reason.
std::unique_ptr<Platform> createPlatform(QString* error);

}  // namespace orlo::wayland
