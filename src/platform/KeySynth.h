#pragma once

namespace orlo {

// Keystrokes posted to the application that has the keyboard focus, as if typed.
class KeySynth {
public:
    virtual ~KeySynth() = default;
    // Whether the system lets Orlo post keystrokes at all; where it does not, the user is
    // told to paste by hand.
    virtual bool canPaste() const { return true; }
    // The system's paste shortcut (Command-V on macOS, Control-V on X11); false when it
    // could not be posted.
    virtual bool postPaste() = 0;
};

}  // namespace orlo
