// A new user's first minute of snapping under a window manager that keeps some of Orlo's
// default keys for itself: one click on the notice, one on Use Free Keys, and the snaps work.
#include "NotificationServer.h"
#include "SnapSession.h"
#include <QRegularExpression>

using namespace orlo::testing;

namespace {
class SnapFreeKeysSession : public SnapSession {
protected:
    static void SetUpTestSuite()
    {
        startSession({}, [] { notifications = new NotificationServer(session->busAddress()); }, true);
    }
    static void TearDownTestSuite()
    {
        SnapSession::TearDownTestSuite();
        delete notifications;
        notifications = nullptr;
    }
    // What Orlo found of other keys: "not needed", "none", or the left half's keys.
    static QString freeKeys()
    {
        static const QRegularExpression line("orlo.windows: free keys: ([^\n]*)\n");
        EXPECT_TRUE(orlo->waitForLine(line.pattern())) << qPrintable(orlo->log());
        return line.match(orlo->log()).captured(1);
    }
    static inline NotificationServer* notifications = nullptr;
};

// The modifiers of keys written as in window managers' settings ("Super+Control+Alt+Left"),
// as xdotool names them: "super+ctrl+alt+".
QString xdotoolModifiers(const QString& keys)
{
    return keys.section('+', 0, -2).toLower().replace("control", "ctrl") + "+";
}
}  // namespace

TEST_F(SnapFreeKeysSession, AfterOneClickOnUseFreeKeysLeftHalfCyclesMovesToTheNextDisplayAndRestores)
{
    const QString found = freeKeys();
    std::cout << "free keys under " << qPrintable(session->windowManager()) << ": " << qPrintable(found) << "\n";
    QString modifiers = "ctrl+alt+";
    QString nextDisplay = "ctrl+alt+super+Right";
    if (found == "not needed") {
        // The window manager keeps none of the default keys: nothing else is offered.
        EXPECT_FALSE(orlo->log().contains(QRegularExpression("hot keys: \\d+ registered, [1-9]")));
    } else {
        ASSERT_NE(found, "none") << "no other set of keys is free under " << qPrintable(session->windowManager());
        ASSERT_TRUE(found.endsWith("+Left for left half")) << qPrintable(found);
        modifiers = xdotoolModifiers(found);
        nextDisplay = modifiers + "shift+Right";
        ASSERT_TRUE(VirtualSession::waitFor([] { return !notifications->shown.isEmpty(); })) << qPrintable(orlo->log());
        const NotificationServer::Shown notice = notifications->shown.first();
        EXPECT_TRUE(notice.body.contains("Click to switch to free keys")) << qPrintable(notice.body);

        // The notice opens the page where both ways out are; the user takes the first.
        notifications->click(notice.id);
        QStringList windows;
        ASSERT_TRUE(VirtualSession::waitFor([&] { return !(windows = session->findWindows("^Orlo Settings$")).isEmpty(); }));
        Window settings;
        settings.id = windows.first();
        settings.activate(*session);
        VirtualSession::waitFor([] { return false; }, 300);  // for people to look at: painted first
        session->screenshot(VirtualSession::screenshotPath("snap-free-keys-" + session->windowManager() + ".png"));
        const qsizetype before = orlo->log().size();
        session->key("alt+f");  // Use Free Keys
        const QRegularExpression allTaken("hot keys: \\d+ registered, 0 refused\n");
        ASSERT_TRUE(VirtualSession::waitFor([&] { return allTaken.match(orlo->log().mid(before)).hasMatch(); }))
            << qPrintable(orlo->log().mid(before));
        EXPECT_TRUE(VirtualSession::waitFor([&] { return notifications->closed.contains(notice.id); })) << "the notice stays";
        session->screenshot(VirtualSession::screenshotPath("snap-free-keys-used-" + session->windowManager() + ".png"));
        session->run("xdotool", {"windowclose", settings.id});
    }

    const QRect before(200, 150, 502, 425);
    Window window(*session, "First Minute", before);
    const QString left = modifiers + "Left";
    EXPECT_TRUE(snapsTo(window, left, QRect(0, 0, 720, 876)));
    EXPECT_TRUE(snapsTo(window, left, QRect(0, 0, 960, 876)));
    EXPECT_TRUE(snapsTo(window, left, QRect(0, 0, 480, 876)));
    EXPECT_TRUE(snapsTo(window, left, QRect(0, 0, 720, 876)));
    EXPECT_TRUE(snapsTo(window, nextDisplay, QRect(1440, 0, 1720, 1440)));
    EXPECT_TRUE(snapsTo(window, modifiers + "BackSpace", before));
}
