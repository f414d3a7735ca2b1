// Hot keys through the desktop portal's global shortcuts, against a portal that the test plays
// on a private session bus: the keys Orlo asks for, the presses it hears, and the sessions it
// leaves behind when its keys change and when it stops.
#include "FakePlatform.h"
#include "FakeShortcutsPortal.h"
#include "ProcessSession.h"
#include "platform/linux/PortalHotKeys.h"
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;
using orlo::testing::FakeShortcutsPortal;
using orlo::testing::ProcessSession;

namespace {

struct BusSession : ProcessSession {
    bool start()
    {
        resetEnvironment();
        return startBus();
    }
};

class PortalShortcutsSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(session.start()) << qPrintable(session.error());
        bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(session.busAddress(), "portal-keys"));
        portal = std::make_unique<FakeShortcutsPortal>(session.busAddress());
        ASSERT_TRUE(portal->isRegistered());
    }
    void TearDown() override
    {
        portal.reset();
        bus.reset();
        QDBusConnection::disconnectFromBus("portal-keys");
    }
    // The one session open, once the portal has bound it.
    QString boundSession(PortalHotKeys& keys)
    {
        ProcessSession::waitFor([&] { return !keys.session().isEmpty() && portal->bound.size() == 1; });
        return keys.session();
    }

    BusSession session;
    std::unique_ptr<QDBusConnection> bus;
    std::unique_ptr<FakeShortcutsPortal> portal;
    fakes::FakeKeyboardLayout layout;
};

TEST_F(PortalShortcutsSession, BindsTheKeysTogetherHearsTheirPressesAndClosesItsSessions)
{
    auto keys = std::make_unique<PortalHotKeys>(*bus, layout);
    QSignalSpy bound(keys.get(), &PortalHotKeys::bound);
    ASSERT_TRUE(keys->registerHotKey(1, KeyCode::LeftArrow, HotKeyModifier::Control | HotKeyModifier::Option));
    ASSERT_TRUE(keys->registerHotKey(2, KeyCode::V, HotKeyModifier::Command | HotKeyModifier::Shift));
    EXPECT_FALSE(keys->registerHotKey(3, 105, HotKeyModifier::Control));  // no key name: nothing to ask for
    ASSERT_TRUE(bound.wait(5000));
    const QString first = boundSession(*keys);
    EXPECT_EQ(portal->bound.value(first), (QStringList{"CTRL+ALT+Left", "SHIFT+LOGO+v"}));
    EXPECT_EQ(bound.size(), 1);  // one binding for keys registered together

    QSignalSpy pressed(keys.get(), &HotKeyService::pressed);
    portal->press("/org/freedesktop/portal/desktop/session/other/1", "SHIFT+LOGO+v");  // another program's
    portal->press(first, "SHIFT+LOGO+v");
    ASSERT_TRUE(pressed.wait(5000));
    ASSERT_EQ(pressed.size(), 1);
    EXPECT_EQ(pressed.first().value(0).toUInt(), 2u);

    // A session is bound once: a change of keys binds the rest in a new one.
    keys->unregisterHotKey(2);
    ASSERT_TRUE(bound.wait(5000));
    const QString second = boundSession(*keys);
    EXPECT_NE(second, first);
    EXPECT_EQ(portal->closed, QStringList{first});
    EXPECT_EQ(portal->bound.value(second), QStringList{"CTRL+ALT+Left"});
    portal->press(first, "CTRL+ALT+Left");  // the closed session's keys are gone
    portal->press(second, "CTRL+ALT+Left");
    ASSERT_TRUE(pressed.wait(5000));
    EXPECT_EQ(pressed.last().value(0).toUInt(), 1u);
    EXPECT_EQ(pressed.size(), 2);

    keys.reset();
    EXPECT_TRUE(ProcessSession::waitFor([&] { return portal->bound.isEmpty(); }));  // closed as Orlo stops
}

TEST_F(PortalShortcutsSession, AKeySetTheUserCancelledBindsNothingAndIsAskedForAgainOnTheNextChange)
{
    PortalHotKeys keys(*bus, layout);
    portal->cancelNextBinding = true;
    ASSERT_TRUE(keys.registerHotKey(1, KeyCode::LeftArrow, HotKeyModifier::Control | HotKeyModifier::Option));
    ASSERT_TRUE(ProcessSession::waitFor([&] { return !portal->bound.isEmpty() && !portal->cancelNextBinding; }));
    EXPECT_TRUE(portal->bound.cbegin().value().isEmpty());

    QSignalSpy bound(&keys, &PortalHotKeys::bound);
    ASSERT_TRUE(keys.registerHotKey(2, KeyCode::RightArrow, HotKeyModifier::Control | HotKeyModifier::Option));
    ASSERT_TRUE(bound.wait(5000));
    EXPECT_EQ(portal->bound.value(keys.session()), (QStringList{"CTRL+ALT+Left", "CTRL+ALT+Right"}));
}

}  // namespace
