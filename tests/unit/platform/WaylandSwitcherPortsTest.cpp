// The Wayland pieces of the switcher that need no compositor: the key tap over Orlo's own
// focused window and the decoding of a window's states.
#include "platform/wayland/FocusedWindowTaps.h"
#include "platform/wayland/ToplevelState.h"
#include <QCoreApplication>
#include <QKeyEvent>
#include <QWindow>
#include <gtest/gtest.h>

using namespace orlo;
using orlo::wayland::ToplevelState;

namespace {
constexpr quint32 XTab = 23, XAltLeft = 64, XA = 38;  // XKB key codes: evdev + 8

QByteArray values(std::initializer_list<quint32> list)
{
    QByteArray bytes;
    for (quint32 v : list) bytes.append(reinterpret_cast<const char*>(&v), sizeof v);
    return bytes;
}
}  // namespace

TEST(FocusedWindowTaps, DeliverTheFocusedWindowsKeysOnlyWhileSeeingEveryKey)
{
    QList<KeyEvent> seen;
    const quint64 mask = (1u << 10) | (1u << 11) | (1u << 12);
    wayland::FocusedWindowTaps backend;
    EXPECT_TRUE(backend.seesOnlyOwnWindows());
    auto tap = backend.createTap(mask, [&](const KeyEvent& e) {
        seen << e;
        return true;
    });
    ASSERT_TRUE(tap && tap->setEnabled(true));
    QWindow window;
    auto send = [&](QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, quint32 scanCode, const QString& text = {}) {
        QKeyEvent event(type, key, modifiers, scanCode, 0, 0, text);
        return QCoreApplication::sendEvent(&window, &event);
    };

    send(QEvent::KeyPress, Qt::Key_Tab, Qt::AltModifier, XTab);  // passes: the display does not want keys yet
    EXPECT_TRUE(seen.isEmpty());

    ASSERT_TRUE(tap->setSeesAllKeys(true));
    EXPECT_TRUE(send(QEvent::KeyPress, Qt::Key_Tab, Qt::AltModifier, XTab));
    EXPECT_TRUE(send(QEvent::KeyPress, Qt::Key_A, Qt::AltModifier, XA, "a"));
    // Qt may still count Alt in its own release: the flags say how things stand after it.
    EXPECT_TRUE(send(QEvent::KeyRelease, Qt::Key_Alt, Qt::AltModifier, XAltLeft));
    ASSERT_EQ(seen.size(), 3);
    EXPECT_EQ(seen[0].type, KeyEventType::KeyDown);
    EXPECT_EQ(seen[0].keyCode, KeyCode::Tab);
    EXPECT_EQ(seen[0].flags, ModifierFlag::Option);
    EXPECT_EQ(seen[1].text, "a");
    EXPECT_EQ(seen[2].type, KeyEventType::FlagsChanged);
    EXPECT_EQ(seen[2].keyCode, KeyCode::Option);
    EXPECT_EQ(seen[2].flags, 0u);

    tap->setEnabled(false);
    send(QEvent::KeyPress, Qt::Key_Tab, {}, XTab);
    EXPECT_EQ(seen.size(), 3);
}

TEST(ToplevelState, ReadsMinimizedAndActivatedAndIgnoresTheRest)
{
    EXPECT_EQ(ToplevelState::decode(values({0, 2})), (ToplevelState{false, true}));
    EXPECT_EQ(ToplevelState::decode(values({1, 3, 77})), (ToplevelState{true, false}));
    EXPECT_EQ(ToplevelState::decode(values({2}).left(3)), ToplevelState{}) << "a value cut short counts for nothing";
    EXPECT_EQ(ToplevelState::decode({}), ToplevelState{});
}
