// The list of a window's states that a compositor sends with each foreign toplevel.
#include "platform/wayland/ToplevelState.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray array(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto state = orlo::wayland::ToplevelState::decode(array);
    // A trailing piece shorter than a value changes nothing.
    if (!(orlo::wayland::ToplevelState::decode(array.left(array.size() - array.size() % 4)) == state)) __builtin_trap();
    return 0;
}
