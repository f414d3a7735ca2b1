#include "platform/linux/KeyCodeMap.h"
#include <QKeyEvent>
#include <array>
#include <utility>

namespace orlo {

namespace {
// {canonical, evdev}: the ANSI/ISO keyboard by position.
constexpr std::pair<quint32, quint32> table[] = {
    {0, 30}, {1, 31}, {2, 32}, {3, 33}, {4, 35}, {5, 34}, {6, 44}, {7, 45}, {8, 46}, {9, 47},
    {10, 86}, {11, 48}, {12, 16}, {13, 17}, {14, 18}, {15, 19}, {16, 21}, {17, 20}, {18, 2}, {19, 3},
    {20, 4}, {21, 5}, {22, 7}, {23, 6}, {24, 13}, {25, 10}, {26, 8}, {27, 12}, {28, 9}, {29, 11},
    {30, 27}, {31, 24}, {32, 22}, {33, 26}, {34, 23}, {35, 25}, {36, 28}, {37, 38}, {38, 36}, {39, 40},
    {40, 37}, {41, 39}, {42, 43}, {43, 51}, {44, 53}, {45, 49}, {46, 50}, {47, 52}, {48, 15}, {49, 57},
    {50, 41}, {51, 14}, {53, 1}, {54, 126}, {55, 125}, {56, 42}, {57, 58}, {58, 56}, {59, 29},
    {60, 54}, {61, 100}, {62, 97}, {64, 187}, {65, 83}, {67, 55}, {69, 78}, {71, 69}, {72, 115},
    {73, 114}, {74, 113}, {75, 98}, {76, 96}, {78, 74}, {79, 188}, {80, 189}, {81, 117}, {82, 82},
    {83, 79}, {84, 80}, {85, 81}, {86, 75}, {87, 76}, {88, 77}, {89, 71}, {90, 190}, {91, 72},
    {92, 73}, {93, 124}, {94, 89}, {95, 121}, {96, 63}, {97, 64}, {98, 65}, {99, 61}, {100, 66},
    {101, 67}, {103, 87}, {105, 183}, {106, 186}, {107, 184}, {109, 68}, {111, 88}, {113, 185},
    {114, 110}, {115, 102}, {116, 104}, {117, 111}, {118, 62}, {119, 107}, {120, 60}, {121, 109},
    {122, 59}, {123, 105}, {124, 106}, {125, 108}, {126, 103},
};

const std::array<int, 256>& reverse()
{
    static const std::array<int, 256> map = [] {
        std::array<int, 256> m;
        m.fill(-1);
        for (auto [canonical, evdev] : table)
            if (evdev + 8 < 256) m[evdev + 8] = int(canonical);
        return m;
    }();
    return map;
}
}  // namespace

std::optional<quint8> xKeyCode(quint32 canonical)
{
    for (auto [c, evdev] : table)
        if (c == canonical) return quint8(evdev + 8);
    return std::nullopt;
}

std::optional<quint32> canonicalKeyCode(quint8 xKeyCode)
{
    const int c = reverse()[xKeyCode];
    if (c < 0) return std::nullopt;
    return quint32(c);
}

quint64 modifierFlags(Qt::KeyboardModifiers modifiers)
{
    quint64 flags = 0;
    if (modifiers & Qt::ShiftModifier) flags |= ModifierFlag::Shift;
    if (modifiers & Qt::ControlModifier) flags |= ModifierFlag::Control;
    if (modifiers & Qt::AltModifier) flags |= ModifierFlag::Option;
    if (modifiers & Qt::MetaModifier) flags |= ModifierFlag::Command;
    return flags;
}

std::optional<KeyEvent> canonicalKeyEvent(const QKeyEvent& event)
{
    const auto code = canonicalKeyCode(quint8(event.nativeScanCode()));
    if (!code) return std::nullopt;
    quint64 flags = modifierFlags(event.modifiers());
    // Caps Lock is the second modifier of the XKB state, as of the X core state.
    constexpr quint32 LockMask = 1u << 1;
    if (event.nativeModifiers() & LockMask) flags |= ModifierFlag::CapsLock;
    const auto type = event.type() == QEvent::KeyRelease ? KeyEventType::KeyUp : KeyEventType::KeyDown;
    return KeyEvent{type, *code, flags, event.isAutoRepeat(), event.text()};
}

}  // namespace orlo
