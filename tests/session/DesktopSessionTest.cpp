// Orlo on a desktop whose window manager, or another application, already holds some of
// Orlo's shortcuts: the user hears about it once, and the keys that do work are not named.
#include "NotificationServer.h"
#include "VirtualSession.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/XConnection.h"
#include <QRegularExpression>
#include <gtest/gtest.h>
#include <xcb/xinput.h>

using namespace orlo;
using orlo::testing::NotificationServer;
using orlo::testing::OrloProcess;
using orlo::testing::VirtualSession;

namespace {

// What each window manager's own defaults hold of Orlo's default snapping keys.
QStringList heldByTheWindowManager(const QString& wm)
{
    // Control-Alt-arrows switch workspaces; xfwm4's Control-Alt-D shows the desktop, and
    // mutter holds Control-Alt-Super-arrows as well.
    const QStringList workspaces{"Left half", "Right half", "Top half", "Bottom half"};
    if (wm == "xfwm4") return workspaces + QStringList{"Left third"};
    if (wm == "mutter") return workspaces + QStringList{"Next display", "Previous display"};
    if (wm == "metacity") return workspaces;
    return {};
}

// Every window manager here but the harness's openbox keeps Alt+Tab for its own switcher,
// which Orlo then reports beside the snapping keys.
bool holdsAltTab(const QString& wm) { return wm != "openbox"; }

class DesktopSession : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.start()) << qPrintable(session.error()); }

    // Another client of the X server takes Control-Alt plus a key: the first by a core
    // grab, which the server refuses Orlo, the second by an XInput 2 grab, which it does not.
    void holdElsewhere(quint32 coreKey, quint32 xinputKey)
    {
        other = x11::XConnection::open(session.display().toLocal8Bit().constData(), nullptr);
        ASSERT_TRUE(other);
        xcb_connection_t* c = other->connection();
        const quint16 ctrlAlt = XCB_MOD_MASK_CONTROL | other->modifierMasks().alt;
        xcb_grab_key(c, 1, other->root(), ctrlAlt, *xKeyCode(coreKey), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        free(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
        const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
        const uint32_t modifiers = ctrlAlt;
        free(xcb_input_xi_passive_grab_device_reply(
            c, xcb_input_xi_passive_grab_device(c, XCB_CURRENT_TIME, other->root(), XCB_NONE, *xKeyCode(xinputKey),
                                                XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                                XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                                XCB_INPUT_GRAB_OWNER_NO_OWNER, &mask, &modifiers),
            nullptr));
        other->flush();
    }
    // The actions whose shortcuts Orlo could not take, as it reports them.
    QStringList refusedActions(OrloProcess& orlo)
    {
        static const QRegularExpression line("orlo.windows: hot keys: \\d+ registered, \\d+ refused(: ([^\n]*))?\n");
        EXPECT_TRUE(orlo.waitForLine(line.pattern())) << qPrintable(orlo.log());
        return line.match(orlo.log()).captured(2).split(", ", Qt::SkipEmptyParts);
    }

    VirtualSession session;
    std::unique_ptr<x11::XConnection> other;
};

}  // namespace

TEST_F(DesktopSession, HeldShortcutsAreNamedInOneNotificationThatOpensTheirPage)
{
    NotificationServer notifications(session.busAddress());
    ASSERT_TRUE(notifications.isRegistered());
    holdElsewhere(32, 34);  // U (top left) and I (top right)
    OrloProcess orlo(session);
    const QStringList refused = refusedActions(orlo);
    for (const QString& action : QStringList{"Top left quarter", "Top right quarter"} + heldByTheWindowManager(session.windowManager()))
        EXPECT_TRUE(refused.contains(action)) << qPrintable(action) << "\n" << qPrintable(orlo.log());
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !notifications.shown.isEmpty(); }, 5000)) << qPrintable(orlo.log());
    const NotificationServer::Shown shown = notifications.shown.first();
    EXPECT_EQ(shown.summary, "Shortcuts in use by another app");
    // The first four are named, in the order of the settings page.
    for (const QString& action : refused.mid(0, 4)) EXPECT_TRUE(shown.body.contains(action)) << qPrintable(shown.body);
    const int named = int(refused.size()) + (holdsAltTab(session.windowManager()) ? 1 : 0);
    if (named > 4) {
        EXPECT_TRUE(shown.body.contains(QString("and %1 more do nothing").arg(named - 4))) << qPrintable(shown.body);
    }

    notifications.click(shown.id);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Settings$").isEmpty(); }));
    VirtualSession::waitFor([] { return false; }, 300);
    session.screenshot(VirtualSession::screenshotPath("taken-shortcuts-" + session.windowManager() + ".png"));
    EXPECT_EQ(notifications.shown.size(), 1) << "one notification per start";
}

TEST_F(DesktopSession, KeysThatWorkAreNeverReportedAsHeld)
{
    // Nothing but the window manager holds keys; openbox here holds none of Orlo's.
    NotificationServer notifications(session.busAddress());
    OrloProcess orlo(session);
    EXPECT_EQ(refusedActions(orlo), heldByTheWindowManager(session.windowManager())) << qPrintable(orlo.log());
    if (heldByTheWindowManager(session.windowManager()).isEmpty()) {
        ASSERT_TRUE(orlo.waitForLine("orlo.shortcuts: (every shortcut works|telling)")) << qPrintable(orlo.log());
        if (!holdsAltTab(session.windowManager())) {
            EXPECT_TRUE(notifications.shown.isEmpty());
        } else {
            // Only the switcher's trigger is named.
            ASSERT_TRUE(VirtualSession::waitFor([&] { return !notifications.shown.isEmpty(); }));
            EXPECT_EQ(notifications.shown.size(), 1);
            EXPECT_TRUE(notifications.shown.first().body.startsWith("Alt+Tab Window Switcher")) << qPrintable(notifications.shown.first().body);
        }
    }
}
