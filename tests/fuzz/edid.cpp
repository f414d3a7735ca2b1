// The EDID block a display reports, as its driver passes it on.
#include "FuzzInput.h"
#include "platform/x11/Edid.h"

using orlo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto edid = orlo::x11::Edid::parse(orlo::fuzz::bytes(data, size));
    if (!edid) return 0;
    require(edid->monitorName.size() <= 13, "a monitor name fits its descriptor");
    require(!edid->key().isEmpty(), "a parsed display has a key");
    return 0;
}
