#pragma once
#include <QByteArray>

namespace orlo::wayland {

// What a compositor's list of a window's states says about it (the foreign toplevel
// interface's state array: 32-bit values in the machine's byte order).
struct ToplevelState {
    bool minimized = false;
    bool activated = false;

    // Unknown values and a trailing piece shorter than a value are ignored.
    static ToplevelState decode(const QByteArray& array);
    bool operator==(const ToplevelState&) const = default;
};

}  // namespace orlo::wayland
