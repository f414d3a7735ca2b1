// Orlo driven from outside: its command line and its D-Bus interface, as a user's window
// manager bindings and scripts call them.
#include "NotificationServer.h"
#include "SnapSession.h"

using namespace orlo::testing;

namespace {

struct Outcome {
    int status = -1;
    QString output;
};

Outcome orloCommand(VirtualSession& session, const QStringList& args)
{
    Outcome run;
    run.status = session.run(VirtualSession::builtProgram("orlo"), args, &run.output);
    return run;
}

Outcome gdbus(VirtualSession& session, const QStringList& args)
{
    Outcome run;
    run.status = session.run("gdbus", QStringList{"call", "--session", "--dest", "app.orlo.Orlo", "--object-path", "/app/orlo/Orlo"} + args,
                             &run.output);
    return run;
}

bool framed(VirtualSession& session, const Window& window, const QRect& frame)
{
    return VirtualSession::waitFor([&] { return session.frameGeometry(window.id) == frame; }, 3000);
}

}  // namespace

TEST(CommandSession, ActionsReachTheRunningOrloFromTheCommandLineAndTheBus)
{
    VirtualSession session("openbox");
    ASSERT_TRUE(session.start()) << qPrintable(session.error());

    Outcome help = orloCommand(session, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.contains("snap ACTION")) << qPrintable(help.output);
    EXPECT_TRUE(help.output.contains("left-two-thirds"));
    Outcome wrong = orloCommand(session, {"snap", "leftHalf"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.output.contains("Unknown ACTION \"leftHalf\" for \"snap\"")) << qPrintable(wrong.output);
    EXPECT_EQ(orloCommand(session, {"dance"}).status, 2);
    Outcome alone = orloCommand(session, {"snap", "left-half"});
    EXPECT_EQ(alone.status, 1);
    EXPECT_TRUE(alone.output.contains("not running")) << qPrintable(alone.output);

    OrloProcess orlo(session);
    ASSERT_TRUE(orlo.waitForLine("orlo.windows: hot keys: \\d+ registered")) << qPrintable(orlo.log());
    Window window(session, "Scripted", QRect(300, 280, 402, 325));

    Outcome snapped = orloCommand(session, {"snap", "left-half"});
    EXPECT_EQ(snapped.status, 0) << qPrintable(snapped.output);
    EXPECT_TRUE(framed(session, window, QRect(0, 0, 720, 876)));
    // Asked again, the half cycles on as its key does.
    EXPECT_EQ(orloCommand(session, {"snap", "left-half"}).status, 0);
    EXPECT_TRUE(framed(session, window, QRect(0, 0, 960, 876)));

    Outcome busSnap = gdbus(session, {"--method", "app.orlo.Orlo.Snap", "right-half"});
    EXPECT_EQ(busSnap.status, 0) << qPrintable(busSnap.output);
    EXPECT_TRUE(framed(session, window, QRect(720, 0, 720, 876)));
    Outcome busWrong = gdbus(session, {"--method", "app.orlo.Orlo.Snap", "sideways"});
    EXPECT_NE(busWrong.status, 0);
    EXPECT_TRUE(busWrong.output.contains("InvalidArgs")) << qPrintable(busWrong.output);
    EXPECT_EQ(orloCommand(session, {"snap", "restore"}).status, 0);
    EXPECT_TRUE(framed(session, window, QRect(300, 280, 402, 325)));

    QString introspection;
    session.run("gdbus", {"introspect", "--session", "--dest", "app.orlo.Orlo", "--object-path", "/app/orlo/Orlo"}, &introspection);
    for (const char* member : {"OpenSwitcher", "OpenClipboard", "OpenSettings", "ToggleKeyboardCleaning", "TogglePreventSleep",
                               "Quit", "readwrite b ClipboardEnabled", "readwrite b SwitcherEnabled"})
        EXPECT_TRUE(introspection.contains(member)) << member << "\n" << qPrintable(introspection);

    // A module switched off over the bus refuses its action, in words.
    Outcome off = gdbus(session, {"--method", "org.freedesktop.DBus.Properties.Set", "app.orlo.Orlo", "ClipboardEnabled", "<false>"});
    EXPECT_EQ(off.status, 0) << qPrintable(off.output);
    EXPECT_TRUE(orlo.waitForLine("orlo.modules: stopped clipboard")) << qPrintable(orlo.log());
    Outcome refused = orloCommand(session, {"clipboard"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.output.contains("The clipboard history is off")) << qPrintable(refused.output);

    EXPECT_EQ(orloCommand(session, {"settings", "windows"}).status, 0);
    EXPECT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Orlo Settings$").isEmpty(); }));

    EXPECT_EQ(orloCommand(session, {"quit"}).status, 0);
    EXPECT_TRUE(orlo.process().waitForFinished(5000));
    EXPECT_EQ(orlo.process().exitCode(), 0);
}

// Bound to a key the window manager keeps for itself, the command opens the switcher, which
// takes the keyboard: Tab steps and Return switches.
TEST(SwitcherCommandSession, TheCommandOpensTheSwitcherWhateverHoldsAltTab)
{
    VirtualSession session;
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    Window first(session, "First", QRect(100, 100, 402, 325));
    Window second(session, "Second", QRect(600, 100, 402, 325));
    Window third(session, "Third", QRect(300, 400, 402, 325));
    OrloProcess orlo(session);
    ASSERT_TRUE(orlo.waitForLine("orlo.modules: started switcher")) << qPrintable(orlo.log());
    third.activate(session);

    Outcome opened = orloCommand(session, {"switcher"});
    EXPECT_EQ(opened.status, 0) << qPrintable(opened.output);
    ASSERT_TRUE(orlo.waitForLine("orlo.switcher: opened at")) << qPrintable(orlo.log());
    session.key("Tab");
    session.key("Return");
    EXPECT_TRUE(orlo.waitForLine("orlo.switcher: switching to")) << qPrintable(orlo.log());
    EXPECT_TRUE(VirtualSession::waitFor([&] { return session.output("xdotool", {"getactivewindow"}) == first.id; }, 3000))
        << "Tab from the second item reaches the third most recent window";
}

// A Wayland session with XWayland: Orlo starts on the X server and tells the user, in a
// notification and on its General page, what it can reach there.
TEST(CommandSession, InAWaylandSessionOrloStartsOnXWaylandAndSaysWhatWorks)
{
    VirtualSession session("openbox");
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    NotificationServer notifications(session.busAddress());
    ASSERT_TRUE(notifications.isRegistered());
    QProcessEnvironment wayland;
    wayland.insert("WAYLAND_DISPLAY", "wayland-orlo-test");
    wayland.insert("XDG_SESSION_TYPE", "wayland");
    OrloProcess orlo(session, {}, wayland);
    EXPECT_TRUE(orlo.waitForLine("a Wayland session: only windows of X11 programs")) << qPrintable(orlo.log());
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !notifications.shown.isEmpty(); }, 5000)) << qPrintable(orlo.log());
    EXPECT_EQ(notifications.shown.first().summary, "Orlo on Wayland");
    EXPECT_TRUE(notifications.shown.first().body.contains("Log in to an X11 session for the whole of Orlo"));
    EXPECT_TRUE(orlo.waitForLine("orlo.windows: hot keys: \\d+ registered")) << "the rest of Orlo starts";
}
