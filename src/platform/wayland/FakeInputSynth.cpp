#include "platform/wayland/FakeInputSynth.h"
#include "fake-input-client-protocol.h"
#include "platform/wayland/WaylandConnection.h"
#include <wayland-client.h>

namespace orlo::wayland {

std::unique_ptr<FakeInputSynth> FakeInputSynth::create(WaylandConnection& connection)
{
    auto* fakeInput = connection.bind<org_kde_kwin_fake_input>(&org_kde_kwin_fake_input_interface, KeysSince);
    if (!fakeInput) return nullptr;
    if (org_kde_kwin_fake_input_get_version(fakeInput) < KeysSince) {
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(fakeInput));
        return nullptr;
    }
    // KWin may show these words to the user when it asks whether to let Orlo type.
    org_kde_kwin_fake_input_authenticate(fakeInput, "Orlo",
                                         "Orlo pastes the clipboard item you choose by pressing Ctrl+V for you.");
    return std::unique_ptr<FakeInputSynth>(new FakeInputSynth(connection, fakeInput));
}

FakeInputSynth::FakeInputSynth(WaylandConnection& connection, org_kde_kwin_fake_input* fakeInput)
    : connection_(connection), fakeInput_(fakeInput)
{
}

FakeInputSynth::~FakeInputSynth()
{
    // Version 4 has no destructor request: the proxy alone goes.
    if (!connection_.isLost()) wl_proxy_destroy(reinterpret_cast<wl_proxy*>(fakeInput_));
}

bool FakeInputSynth::ready() const { return !connection_.isLost(); }

bool FakeInputSynth::key(quint32 code, bool pressed)
{
    org_kde_kwin_fake_input_keyboard_key(fakeInput_, code, pressed ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    return true;
}

bool FakeInputSynth::send() { return wl_display_flush(connection_.display()) >= 0; }

}  // namespace orlo::wayland
