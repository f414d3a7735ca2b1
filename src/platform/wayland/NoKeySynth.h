#pragma once
#include "platform/KeySynth.h"

namespace orlo::wayland {

// A compositor that lets Orlo type no keys: the user pastes by hand.
class NoKeySynth : public KeySynth {
public:
    bool canPaste() const override { return false; }
    bool postPaste() override { return false; }
};

}  // namespace orlo::wayland
