#pragma once

namespace orlo {

// Keystrokes posted to the application that has the keyboard focus, as if typed.
class KeySynth {
public:
    virtual ~KeySynth() = default;
    // The system's paste shortcut (Command-V on macOS, Control-V on X11); false when it
    // could not be posted.
    virtual bool postPaste() = 0;
};

}  // namespace orlo
