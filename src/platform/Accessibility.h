#pragma once

namespace orlo {

// Whether Orlo may watch the keyboard, move other applications' windows and post keys.
class Accessibility {
public:
    virtual ~Accessibility() = default;
    virtual bool isTrusted() = 0;
    // Asks the system for trust, showing its own prompt where it has one; returns the state.
    virtual bool requestTrust() = 0;
    // Shows the user where the permission is granted.
    virtual void openSettings() = 0;
};

}  // namespace orlo
