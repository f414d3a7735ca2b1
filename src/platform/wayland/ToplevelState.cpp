#include "platform/wayland/ToplevelState.h"
#include <cstring>

namespace orlo::wayland {

namespace {
constexpr quint32 Minimized = 1;
constexpr quint32 Activated = 2;
}  // namespace

ToplevelState ToplevelState::decode(const QByteArray& array)
{
    ToplevelState state;
    for (qsizetype at = 0; at + qsizetype(sizeof(quint32)) <= array.size(); at += sizeof(quint32)) {
        quint32 value = 0;
        std::memcpy(&value, array.constData() + at, sizeof value);
        state.minimized = state.minimized || value == Minimized;
        state.activated = state.activated || value == Activated;
    }
    return state;
}

}  // namespace orlo::wayland
