// Hot keys through the global shortcuts service of a real KWin on Wayland. No key can be
// typed into kwin_wayland --virtual from outside, so a press is asked of the service over
// D-Bus (invokeShortcut), which sends Orlo the same signal a key press does.
#include "WaylandSession.h"
#include "platform/linux/KGlobalAccelHotKeys.h"
#include "platform/linux/QtKeys.h"
#include <QDBusReply>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;
using orlo::testing::WaylandSession;

namespace {

struct UsLayout : KeyboardLayout {
    std::optional<QString> character(quint32 keyCode) override
    {
        return keyCode == 0 ? std::optional<QString>(QStringLiteral("a")) : std::nullopt;
    }
    std::optional<KeyEvent> keyEvent(const QKeyEvent&) override { return std::nullopt; }
};

class KWinShortcutsSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(kwin.start()) << qPrintable(kwin.error());
        bus = std::make_unique<QDBusConnection>(kwin.connectToBus());
        ASSERT_TRUE(KGlobalAccelHotKeys::offeredOn(*bus));
    }
    QStringList actions(const QString& component)
    {
        QDBusMessage call = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel",
                                                           "allActionsForComponent");
        call << QStringList{component};
        const QDBusMessage reply = bus->call(call);
        QStringList names;
        if (reply.type() == QDBusMessage::ReplyMessage)
            for (const QStringList& id : qdbus_cast<QList<QStringList>>(reply.arguments().value(0))) names << id.value(1);
        return names;
    }
    void invoke(const QString& component, const QString& action)
    {
        QDBusMessage call = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/component/" + component,
                                                           "org.kde.kglobalaccel.Component", "invokeShortcut");
        call << action;
        bus->call(call);
    }

    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    std::unique_ptr<QDBusConnection> bus;
    UsLayout layout;
};

TEST_F(KWinShortcutsSession, RegistersListsAndDeliversItsShortcutsAndRemovesThemWhenItStops)
{
    auto hotKeys = std::make_unique<KGlobalAccelHotKeys>(*bus, layout);
    const QString component = hotKeys->component();
    ASSERT_TRUE(hotKeys->registerHotKey(7, 123, HotKeyModifier::Control | HotKeyModifier::Option));       // Ctrl+Alt+Left
    ASSERT_TRUE(hotKeys->registerHotKey(8, 0, HotKeyModifier::Control | HotKeyModifier::Option | HotKeyModifier::Shift));  // Ctrl+Alt+Shift+A
    const QString left = KGlobalAccelHotKeys::actionName(*qtKeyCombination(123, HotKeyModifier::Control | HotKeyModifier::Option, layout));
    const QString a = KGlobalAccelHotKeys::actionName(*qtKeyCombination(0, HotKeyModifier::Control | HotKeyModifier::Option | HotKeyModifier::Shift, layout));
    EXPECT_EQ(left, "Ctrl+Alt+Left");
    EXPECT_EQ(a, "Ctrl+Alt+Shift+A");
    // Listed where System Settings finds them.
    QStringList listed = actions(component);
    listed.sort();
    EXPECT_EQ(listed, (QStringList{left, a}));

    QSignalSpy pressed(hotKeys.get(), &HotKeyService::pressed);
    invoke(component, a);
    ASSERT_TRUE(WaylandSession::waitFor([&] { return !pressed.isEmpty(); }));
    EXPECT_EQ(pressed.takeFirst().value(0).toUInt(), 8u);

    hotKeys->unregisterHotKey(8);
    EXPECT_EQ(actions(component), QStringList{left});
    hotKeys.reset();
    EXPECT_TRUE(actions(component).isEmpty());
}

TEST_F(KWinShortcutsSession, RefusesAKeyKWinHoldsAndClearsWhatACrashedOrloLeft)
{
    KGlobalAccelHotKeys hotKeys(*bus, layout);
    // Alt+Tab walks through KWin's own windows.
    EXPECT_TRUE(hotKeys.isHeldByAnotherApp(48, HotKeyModifier::Option));
    EXPECT_FALSE(hotKeys.registerHotKey(1, 48, HotKeyModifier::Option));
    EXPECT_FALSE(hotKeys.isHeldByAnotherApp(123, HotKeyModifier::Control | HotKeyModifier::Option));
    EXPECT_TRUE(actions(hotKeys.component()).isEmpty());

    // A shortcut of an Orlo that was killed is still registered...
    const QStringList id{hotKeys.component(), "Ctrl+Alt+Up", "Orlo", "Orlo: Ctrl+Alt+Up"};
    QDBusMessage doRegister = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", "doRegister");
    bus->call(doRegister << id);
    QDBusMessage set = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", "setShortcut");
    set << id << QVariant::fromValue(QList<int>{*qtKeyCombination(126, HotKeyModifier::Control | HotKeyModifier::Option, layout)}) << 2u;
    bus->call(set);
    ASSERT_EQ(actions(hotKeys.component()), QStringList{"Ctrl+Alt+Up"});
    // ...until the next Orlo starts.
    KGlobalAccelHotKeys next(*bus, layout);
    EXPECT_TRUE(actions(next.component()).isEmpty());
}

}  // namespace
