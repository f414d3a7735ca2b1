#pragma once
#include "platform/EventTapBackend.h"

namespace orlo::wayland {

// A Wayland client receives only the keys typed into its own windows: no tap of the
// session's keyboard can be made.
class NoEventTaps : public EventTapBackend {
public:
    std::unique_ptr<KeyTap> createTap(quint64, Callback) override { return nullptr; }
};

}  // namespace orlo::wayland
