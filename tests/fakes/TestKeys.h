#pragma once
#include "platform/Keys.h"

// The modifiers of Orlo's default snapping keys.
inline constexpr quint64 ControlOption = orlo::ModifierFlag::Control | orlo::ModifierFlag::Option;
