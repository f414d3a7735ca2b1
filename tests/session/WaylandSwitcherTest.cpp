// The window switcher in a headless Wayland compositor (sway or KWin, ORLO_TEST_COMPOSITOR):
// the real Orlo lists the native windows of other programs, shows its display with the
// keyboard focus, and switches to the chosen window.
#include "VirtualSession.h"
#include "WaylandSession.h"
#include <QRegularExpression>
#include <QImage>
#include <gtest/gtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::WaylandSession;

namespace {

class WaylandSwitcher : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(session.start()) << qPrintable(session.error());
        // Without a tray Orlo shows its settings window once, which would take the focus from
        // the windows opened below.
        // Written as the session's user, whose folder it must stay.
        const QString folder = session.configHome() + "/Orlo";
        ASSERT_EQ(session.run("sh", {"-c", "mkdir -p \"$0\" && echo '{\"app.settingsShownWithoutTray\": true}' > \"$0/settings.json\"",
                                     folder}),
                  0);
        orlo = std::make_unique<OrloProcess>(session);
        // KWin keeps Alt+Tab for its own switcher: there Orlo's opens by command only.
        ASSERT_TRUE(orlo->waitForLine("started: .* opens the switcher|Alt-Tab is held by another program|Alt-Tab reaches Orlo once")) << qPrintable(orlo->log());
        // Opened one after the other, each window is activated in turn: Gamma last.
        for (const char* title : {"Alpha", "Beta", "Gamma"}) {
            QProcess* window = session.launchQt(WaylandSession::builtProgram("orlo-test-window"), {title});
            ASSERT_TRUE(WaylandSession::waitFor([&] { return window->peek(1 << 16).contains(QByteArray("active ") + title); }))
                << title << qPrintable(window->readAllStandardError());
            windows.insert(title, window);
        }
    }

    bool onSway() const { return session.compositor() == QLatin1String("sway"); }
    void openSwitcher()
    {
        ASSERT_EQ(session.run(WaylandSession::builtProgram("orlo"), {"switcher"}), 0) << qPrintable(orlo->log());
        ASSERT_TRUE(orlo->waitForLine("opened at .* with 3 items")) << qPrintable(orlo->log());
    }

    WaylandSession session{qEnvironmentVariable("ORLO_TEST_COMPOSITOR", "sway")};
    std::unique_ptr<OrloProcess> orlo;
    QHash<QString, QProcess*> windows;
};

TEST_F(WaylandSwitcher, ListsNativeWindowsMostRecentFirstAndTakesTheKeyboard)
{
    if (onSway()) {
        // Recency is the order of activation, not of opening.
        session.swaymsg({"[title=\"Alpha\"] focus"});
        ASSERT_TRUE(WaylandSession::waitFor([&] { return session.focusedTitle() == "Alpha"; }));
    }
    openSwitcher();
    const QString order = onSway() ? "Alpha | Gamma | Beta" : "Gamma | Beta | Alpha";
    EXPECT_TRUE(orlo->waitForLine("listed: " + QRegularExpression::escape(order))) << qPrintable(orlo->log());
    // Opened by a command with no key held, it waits for Return rather than a modifier's release.
    EXPECT_TRUE(orlo->waitForLine("the display has the keyboard, let go already: stays open")) << qPrintable(orlo->log());
    // The display stands in the middle of the first output; its first frame comes a little
    // later: dark where the windows behind are light.
    const QString shot = WaylandSession::screenshotPath(QString(onSway() ? "sway" : "kwin-wayland") + "-switcher.png");
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.screenshot(shot) && QImage(shot).pixelColor(640, 300).lightness() < 100; }));
}

TEST_F(WaylandSwitcher, TabAndReturnSwitchToTheChosenWindow)
{
    if (!onSway()) GTEST_SKIP() << "no virtual keyboard in this compositor to type into the display";
    openSwitcher();
    ASSERT_TRUE(orlo->waitForLine("the display has the keyboard")) << qPrintable(orlo->log());
    // Gamma, Beta, Alpha: the command selects Beta, a second command steps to Alpha as Tab does.
    ASSERT_EQ(session.run(WaylandSession::builtProgram("orlo"), {"switcher"}), 0);
    ASSERT_TRUE(session.press({"Return"}));
    ASSERT_TRUE(orlo->waitForLine("switching to w")) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.focusedTitle() == "Alpha"; })) << qPrintable(session.focusedTitle());
}

TEST_F(WaylandSwitcher, TypingSearchesAndEscapeOrLeavingTheDisplayCancels)
{
    if (!onSway()) GTEST_SKIP() << "no virtual keyboard in this compositor to type into the display";
    openSwitcher();
    ASSERT_TRUE(orlo->waitForLine("the display has the keyboard")) << qPrintable(orlo->log());
    ASSERT_TRUE(session.press({"Escape"}));
    ASSERT_TRUE(orlo->waitForLine("cancelled")) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.focusedTitle() == "Gamma"; })) << qPrintable(session.focusedTitle());

    openSwitcher();
    ASSERT_TRUE(WaylandSession::waitFor([&] { return orlo->log().count("the display has the keyboard") == 2; }));
    session.swaymsg({"[title=\"Beta\"] focus"});
    EXPECT_TRUE(WaylandSession::waitFor([&] { return orlo->log().count("cancelled") == 2; })) << qPrintable(orlo->log());

    openSwitcher();
    ASSERT_TRUE(WaylandSession::waitFor([&] { return orlo->log().count("the display has the keyboard") == 3; }));
    // "al" finds Alpha alone; Return switches to it.
    ASSERT_TRUE(session.press({"a", "l", "Return"}));
    ASSERT_TRUE(orlo->waitForLine("switching to w")) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.focusedTitle() == "Alpha"; })) << qPrintable(session.focusedTitle());
}

TEST_F(WaylandSwitcher, AltTabBoundInSwaysConfigurationOpensTheSwitcher)
{
    if (!onSway()) GTEST_SKIP() << "sway alone binds keys in its configuration; KWin's Alt+Tab is its own";
    // The line the switcher's settings page gives for sway's configuration, with the built Orlo.
    session.swaymsg({"bindsym", "Mod1+Tab", "exec", WaylandSession::builtProgram("orlo") + " switcher"});
    ASSERT_TRUE(session.press({"Alt+Tab"}));
    ASSERT_TRUE(orlo->waitForLine("opened at .* with 3 items")) << qPrintable(orlo->log());
    ASSERT_TRUE(orlo->waitForLine("the display has the keyboard")) << qPrintable(orlo->log());
    // Gamma, Beta, Alpha: the previous window is selected.
    ASSERT_TRUE(session.press({"Return"}));
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.focusedTitle() == "Beta"; })) << qPrintable(session.focusedTitle());
}

TEST_F(WaylandSwitcher, AltTabShowsTheDisplayAboveAFullScreenWindowAndLettingGoOfAltSwitches)
{
    if (!onSway()) GTEST_SKIP() << "sway alone binds keys in its configuration; KWin's Alt+Tab is its own";
    session.swaymsg({"bindsym", "Mod1+Tab", "exec", WaylandSession::builtProgram("orlo") + " switcher"});
    session.swaymsg({"[title=\"Gamma\"] fullscreen enable"});
    // Gamma covers the first output, light where the display will be dark.
    const QString shot = WaylandSession::screenshotPath("sway-fullscreen-window.png");
    const QString shown = WaylandSession::screenshotPath("sway-switcher-over-fullscreen.png");
    const QPoint panel(640, 300);
    ASSERT_TRUE(WaylandSession::waitFor([&] { return session.screenshot(shot) && QImage(shot).pixelColor(panel).lightness() > 200; }));

    QProcess* keys = session.launchQt(WaylandSession::builtProgram("orlo-test-keys"), {"--hold-alt"});
    ASSERT_TRUE(orlo->waitForLine("the display has the keyboard: letting go switches")) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.screenshot(shown) && QImage(shown).pixelColor(panel).lightness() < 100; }));
    // Above the full-screen window as no window of sway's: the tree holds the three windows only.
    const QString tree = session.swaymsg({"-t", "get_tree"});
    EXPECT_TRUE(tree.contains("Gamma") && !tree.contains("Orlo")) << qPrintable(tree);

    // Letting go of Alt switches to the window selected, the second listed (Beta). sway itself
    // keeps the focus from a window hidden behind a full-screen one: the display is gone and
    // the full-screen window shows again.
    const QRegularExpressionMatch opened = QRegularExpression("items: \\S+ (\\S+)").match(orlo->log());
    ASSERT_TRUE(opened.hasMatch()) << qPrintable(orlo->log());
    keys->closeWriteChannel();
    ASSERT_TRUE(orlo->waitForLine("switching to " + opened.captured(1))) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return session.screenshot(shot) && QImage(shot).pixelColor(panel).lightness() > 200; }));
}

}  // namespace
