#include "FakePlatform.h"
#include "input/EventTap.h"
#include <gtest/gtest.h>

using namespace orlo;

TEST(EventTap, MaskHasOneBitPerTypeAndSkipsNotifications)
{
    EXPECT_EQ(EventTap::maskFor({KeyEventType::KeyDown, KeyEventType::KeyUp, KeyEventType::FlagsChanged}),
              (1ull << 10) | (1ull << 11) | (1ull << 12));
    EXPECT_EQ(EventTap::maskFor({KeyEventType::TapDisabledByTimeout}), 0u);
    EXPECT_EQ(EventTap::maskFor({}), 0u);
}

TEST(EventTap, StartsOnceStopsSafelyAndStartsAgain)
{
    fakes::FakeEventTapBackend backend;
    EventTap tap(backend, {KeyEventType::KeyDown}, [](KeyEventType, const KeyEvent&) { return false; });
    tap.stop();
    EXPECT_TRUE(tap.start());
    EXPECT_TRUE(tap.start());
    EXPECT_EQ(backend.created, 1);
    tap.stop();
    tap.stop();
    EXPECT_FALSE(tap.isRunning());
    EXPECT_TRUE(tap.start());
    EXPECT_EQ(backend.created, 2);

    fakes::FakeEventTapBackend refusing;
    refusing.refuse = true;
    EventTap refused(refusing, {KeyEventType::KeyDown}, [](KeyEventType, const KeyEvent&) { return true; });
    EXPECT_FALSE(refused.start());
    EXPECT_FALSE(refused.isRunning());
}

TEST(EventTap, HandlerDecidesAndADisabledTapIsSwitchedBackOn)
{
    fakes::FakeEventTapBackend backend;
    QList<quint32> seen;
    EventTap tap(backend, {KeyEventType::KeyDown}, [&](KeyEventType, const KeyEvent& e) {
        seen << e.keyCode;
        return e.keyCode == KeyCode::Tab;
    });
    tap.setWatchedKeys({{KeyCode::Tab, ModifierFlag::Option}});
    tap.setSeesAllKeys(true);
    ASSERT_TRUE(tap.start());
    fakes::FakeKeyTap& raw = *backend.last;
    EXPECT_EQ(raw.watched.size(), 1);
    EXPECT_TRUE(raw.seesAll);
    EXPECT_TRUE(raw.send(KeyEventType::KeyDown, KeyCode::Tab));
    EXPECT_FALSE(raw.send(KeyEventType::KeyDown, KeyCode::A));

    raw.enabled = false;
    raw.seesAll = false;
    EXPECT_FALSE(raw.send(KeyEventType::TapDisabledByTimeout));
    EXPECT_FALSE(raw.send(KeyEventType::TapDisabledByUserInput));
    EXPECT_TRUE(raw.enabled);
    EXPECT_TRUE(raw.seesAll);  // a tap that was seeing every key does so again
    EXPECT_EQ(seen, (QList<quint32>{KeyCode::Tab, KeyCode::A}));

    tap.stop();
    EXPECT_EQ(backend.last, nullptr) << "the tap and its keys are let go";
}
