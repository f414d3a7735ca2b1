#pragma once
#include "platform/KeySynth.h"

namespace orlo::mac {

// Command-V posted at the HID level with CGEventPost, as if typed.
class MacKeySynth : public KeySynth {
public:
    bool postPaste() override;
};

}  // namespace orlo::mac
