// What Orlo's own layer surface makes of the seat's keys, held or not, and of a screen's scale.
#include "platform/linux/KeyCodeMap.h"
#include "platform/wayland/KeyRepeat.h"
#include "platform/wayland/LayerShellOverlay.h"
#include "platform/wayland/XkbKeyEvents.h"
#include <QTest>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

using namespace orlo;
using orlo::wayland::LayerShellOverlay;
using orlo::wayland::XkbKeyEvents;

namespace {

// The modifier masks of XKB's standard keymaps.
constexpr quint32 ShiftMask = 1 << 0, LockMask = 1 << 1, AltMask = 1 << 3;

void useUsKeymap(XkbKeyEvents& keys)
{
    const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
    keys.setKeymap(xkb_keymap_new_from_names(keys.context(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

// The key as the switcher's tap reads it from the Qt event the surface hands the view.
KeyEvent tapped(const XkbKeyEvents& keys, quint32 evdevKey, bool pressed)
{
    const auto event = keys.keyEvent(evdevKey, pressed);
    if (!event) return {};
    return canonicalKeyEvent(*event).value_or(KeyEvent{});
}

}  // namespace

TEST(XkbKeyEvents, TheSeatsKeysReachTheTapAsTheKeysTheyAreWithTheirModifiersAndText)
{
    XkbKeyEvents keys;
    EXPECT_EQ(keys.keyEvent(KEY_A, true), nullptr) << "no keymap yet";
    useUsKeymap(keys);

    const KeyEvent a = tapped(keys, KEY_A, true);
    EXPECT_EQ(a.type, KeyEventType::KeyDown);
    EXPECT_EQ(a.keyCode, KeyCode::A);
    EXPECT_EQ(a.text, "a");
    EXPECT_EQ(a.flags, 0u);

    keys.setModifiers(ShiftMask, 0, 0, 0);
    const KeyEvent shifted = tapped(keys, KEY_A, true);
    EXPECT_EQ(shifted.text, "A");
    EXPECT_EQ(shifted.flags, ModifierFlag::Shift);
    EXPECT_EQ(keys.modifiers(), Qt::ShiftModifier);

    // Alt+Tab steps; letting go of Alt comes as the key first, its modifier after: the tap
    // takes the key's release for the flags' change.
    keys.setModifiers(AltMask, 0, 0, 0);
    const KeyEvent tab = tapped(keys, KEY_TAB, true);
    EXPECT_EQ(tab.keyCode, KeyCode::Tab);
    EXPECT_EQ(tab.flags, ModifierFlag::Option);
    const KeyEvent altUp = tapped(keys, KEY_LEFTALT, false);
    EXPECT_EQ(altUp.type, KeyEventType::KeyUp);
    EXPECT_EQ(altUp.keyCode, KeyCode::Option);

    // Caps Lock types capitals and is a flag of its own.
    keys.setModifiers(0, 0, LockMask, 0);
    const KeyEvent locked = tapped(keys, KEY_L, true);
    EXPECT_EQ(locked.text, "L");
    EXPECT_EQ(locked.flags, ModifierFlag::CapsLock);
    EXPECT_EQ(tapped(keys, KEY_ESC, true).keyCode, KeyCode::Escape);
}

TEST(XkbKeyEvents, AnUnreadableKeymapKeepsTheOneBefore)
{
    XkbKeyEvents keys;
    useUsKeymap(keys);
    keys.setKeymap(nullptr);
    EXPECT_EQ(tapped(keys, KEY_A, true).text, "a");
}

TEST(LayerShellOverlay, TheBufferIsDrawnAtTheScreensWholeScaleRoundedUp)
{
    EXPECT_EQ(LayerShellOverlay::bufferScale(1.0), 1);
    EXPECT_EQ(LayerShellOverlay::bufferScale(2.0), 2);
    EXPECT_EQ(LayerShellOverlay::bufferScale(1.25), 2);
    EXPECT_EQ(LayerShellOverlay::bufferScale(0.0), 1);
    EXPECT_EQ(LayerShellOverlay::bufferScale(qQNaN()), 1);
}

// A held key repeats, the one pressed last, until it is let go; a modifier pressed meanwhile
// neither repeats nor stops it, and the repeats reach the tap marked as repeats.
TEST(KeyRepeat, TheKeyHeldLastRepeatsUntilItIsLetGo)
{
    XkbKeyEvents keys;
    useUsKeymap(keys);
    EXPECT_TRUE(keys.repeats(KEY_TAB));
    EXPECT_TRUE(keys.repeats(KEY_DOWN));
    EXPECT_FALSE(keys.repeats(KEY_LEFTALT));
    EXPECT_TRUE(canonicalKeyEvent(*keys.keyEvent(KEY_TAB, true, true))->isRepeat);

    QList<quint32> repeated;
    orlo::wayland::KeyRepeat repeat([&](quint32 key) { repeated << key; });
    repeat.setPace(100, 1);
    repeat.pressed(KEY_DOWN, true);
    repeat.pressed(KEY_TAB, true);
    repeat.pressed(KEY_LEFTALT, false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return repeated.size() >= 2; }));
    EXPECT_EQ(repeated.count(KEY_DOWN), 0);
    repeat.released(KEY_DOWN);  // not the key repeating
    EXPECT_TRUE(repeat.isRepeating());
    repeat.released(KEY_TAB);
    EXPECT_FALSE(repeat.isRepeating());

    repeat.setPace(0, 600);  // the compositor asks for no repeat
    repeat.pressed(KEY_TAB, true);
    EXPECT_FALSE(repeat.isRepeating());
}
