#pragma once
// Typing into a KWin session from a benchmark, through KWin's fake input, which KWin lets the
// benchmark use by the desktop entry the session writes for it.
#include "WaylandSession.h"
#include "platform/wayland/FakeInputSynth.h"
#include "platform/wayland/WaylandConnection.h"
#include <memory>

struct KWinFakeKeyboard {
    std::unique_ptr<orlo::wayland::WaylandConnection> connection;
    std::unique_ptr<orlo::wayland::FakeInputSynth> keys;
};

// This program's own connection to the session's KWin and the keyboard on it; empty keys,
// with a reason, when KWin cannot be reached or offers no fake input.
inline KWinFakeKeyboard kwinFakeKeyboard(const orlo::testing::WaylandSession& kwin, QString* error)
{
    qputenv("WAYLAND_DISPLAY", kwin.waylandDisplay().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", kwin.runtimeDir().toLocal8Bit());
    KWinFakeKeyboard keyboard;
    keyboard.connection = orlo::wayland::WaylandConnection::open(error);
    if (keyboard.connection) keyboard.keys = orlo::wayland::FakeInputSynth::create(*keyboard.connection);
    if (keyboard.connection && !keyboard.keys) *error = QStringLiteral("KWin offers no fake input to the benchmark");
    return keyboard;
}
