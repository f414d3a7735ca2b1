#pragma once
#include "platform/wayland/EvdevKeySynth.h"
#include <memory>

struct org_kde_kwin_fake_input;

namespace orlo::wayland {

class WaylandConnection;

// The paste keystroke typed through KWin's fake input. KWin offers it only to the programs
// it trusts: the desktop entry whose Exec names the program's own path lists the interface
// in X-KDE-Wayland-Interfaces (Orlo's installed entry does). The keys go through KWin's
// keymap, the user's layout; Control and V keep their places on the usual layouts.
class FakeInputSynth : public EvdevKeySynth {
public:
    // The first version with keyboard keys.
    static constexpr quint32 KeysSince = 4;
    // nullptr when KWin does not offer fake input to Orlo, or offers it without keys.
    static std::unique_ptr<FakeInputSynth> create(WaylandConnection& connection);
    ~FakeInputSynth() override;

protected:
    bool ready() const override;
    bool key(quint32 code, bool pressed) override;
    bool send() override;

private:
    FakeInputSynth(WaylandConnection& connection, org_kde_kwin_fake_input* fakeInput);

    WaylandConnection& connection_;
    org_kde_kwin_fake_input* fakeInput_;
};

}  // namespace orlo::wayland
