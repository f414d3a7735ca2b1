#pragma once
#include "platform/EventTapBackend.h"
#include <QtCore/qnamespace.h>

namespace orlo::wayland {

// Key taps over the keys the compositor gives Orlo's own focused window, the only keys a
// Wayland client sees. A tap delivers nothing until it is asked to see every key: then the
// window that wants the keys (the switcher's display) takes the focus, and each key typed
// into it reaches the tap first, the modifier keys as flag changes.
class FocusedWindowTaps : public EventTapBackend {
public:
    // A display Orlo shows on its own surface (the layer shell's) rather than as a Qt window:
    // the modifiers held while it has the keyboard; nothing otherwise.
    using OwnSurfaceModifiers = std::function<std::optional<Qt::KeyboardModifiers>()>;
    explicit FocusedWindowTaps(OwnSurfaceModifiers ownSurfaceModifiers = {}) : ownSurfaceModifiers_(std::move(ownSurfaceModifiers)) {}
    std::unique_ptr<KeyTap> createTap(quint64 mask, Callback callback) override;
    bool seesOnlyOwnWindows() const override { return true; }

private:
    OwnSurfaceModifiers ownSurfaceModifiers_;
};

}  // namespace orlo::wayland
