// The window switcher in the real application: Alt+Tab among windows of other processes
// (xterms and a Qt window), on a 1440x900 primary monitor and a 3440x1440 monitor to its
// right. Under a desktop's window manager the suite first unbinds the window manager's own
// Alt+Tab and Super+Tab in its settings, as a user would; SwitcherKeyHeldSession starts Orlo
// with them bound.
#include "VirtualSession.h"
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

using namespace orlo::testing;

namespace {

class SwitcherSession : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        session = new VirtualSession;
        const QString wm = session->windowManager();
        if (wm != "openbox" && !session->freeSwitchingKeys()) {
            skipReason = wm + " holds Alt-Tab and Super-Tab, and its key-binding settings could not be written to free "
                              "them; SwitcherKeyHeldSession checks that Orlo reports the held key";
            return;
        }
        ASSERT_TRUE(session->start()) << qPrintable(session->error());
        session->run("wmctrl", {"-n", "2"});
        // Three terminals and a Qt window; used in this order, Gamma last.
        for (const char* title : {"Alpha", "Beta", "Gamma"}) windows[title] = terminal(title);
        windows["Qt Keys"] = qtWindow("Qt Keys");
        for (const char* title : {"Qt Keys", "Alpha", "Beta", "Gamma"}) activate(windows[title]);
        startOrlo({});
    }
    static void TearDownTestSuite()
    {
        delete orlo;
        delete session;
        orlo = nullptr;
        session = nullptr;
    }
    void SetUp() override
    {
        if (!skipReason.isEmpty()) GTEST_SKIP() << qPrintable(skipReason);
        // Each test starts from the same order of use: Gamma in front, then Beta, Alpha.
        for (const char* title : {"Qt Keys", "Alpha", "Beta", "Gamma"}) activate(windows[title]);
        session->mouseMove(700, 400);
    }

    static void startOrlo(const QJsonObject& settings)
    {
        delete orlo;
        QDir().mkpath(session->configHome() + "/Orlo");
        QFile file(session->configHome() + "/Orlo/settings.json");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QJsonDocument(settings).toJson());
        file.close();
        orlo = new OrloProcess(*session);
        const QString trigger = settings.value("switcher.trigger") == "command" ? "Super-Tab" : "Alt-Tab";
        ASSERT_TRUE(orlo->waitForLine("orlo.switcher: started: " + trigger)) << qPrintable(orlo->log());
    }
    static QString terminal(const QString& title)
    {
        session->launch("xterm", {"-T", title, "-geometry", "70x20"});
        QString id;
        VirtualSession::waitFor([&] { return !(id = session->findWindows("^" + title + "$").value(0)).isEmpty(); });
        EXPECT_FALSE(id.isEmpty()) << "xterm " << qPrintable(title) << " did not start";
        return id;
    }
    static QString qtWindow(const QString& title)
    {
        keys = session->launch(VirtualSession::builtProgram("orlo-test-window"), {title});
        QString out;
        VirtualSession::waitFor([&] { return (out += QString::fromLocal8Bit(keys->readAllStandardOutput())).contains('\n'); });
        return out.section(' ', 1).section('\n', 0, 0).trimmed();
    }
    static void activate(const QString& id)
    {
        session->run("xdotool", {"windowactivate", "--sync", id});
        VirtualSession::waitFor([&] { return active() == id; });
    }
    static QString active() { return session->output("xdotool", {"getactivewindow"}); }
    static bool becomesActive(const QString& title)
    {
        return VirtualSession::waitFor([&] { return active() == windows[title]; }, 3000);
    }
    // xdotool without --clearmodifiers: the test holds Alt itself.
    static void xdo(const QStringList& args) { session->run("xdotool", args); }
    // The last opening's item ids, as Orlo reports them.
    static QString lastOpening()
    {
        const auto matches = QRegularExpression("opened at (-?\\d+),(-?\\d+) (\\d+)x(\\d+) with \\d+ items: ([^\\n]*)").globalMatch(orlo->log());
        QString last;
        QRegularExpressionMatch m;
        for (auto it = matches; it.hasNext();) last = it.next().captured(0);
        return last;
    }
    static bool waitForOpening(int count)
    {
        return VirtualSession::waitFor([&] { return orlo->log().count("orlo.switcher: opened at") >= count; }, 3000);
    }
    static int openings() { return int(orlo->log().count("orlo.switcher: opened at")); }
    static QRect openedAt()
    {
        const auto m = QRegularExpression("opened at (-?\\d+),(-?\\d+) (\\d+)x(\\d+)").match(lastOpening());
        return QRect(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt(), m.captured(4).toInt());
    }
    static QString shot(const QString& name)
    {
        const QString dir = QDir::current().absoluteFilePath("screenshots");
        QDir().mkpath(dir);
        const QString path = dir + "/" + name;
        EXPECT_TRUE(session->screenshot(path));
        return path;
    }

    // A window of the test's own that is closed when the test ends, however it ends.
    struct Closing {
        QString id;
        ~Closing()
        {
            session->run("wmctrl", {"-i", "-c", id});
            VirtualSession::waitFor([&] { return !session->output("wmctrl", {"-l"}).contains(QString::number(id.toULongLong(), 16)); });
        }
    };

    static VirtualSession* session;
    static OrloProcess* orlo;
    static QProcess* keys;
    static QHash<QString, QString> windows;
    static QString skipReason;
};
VirtualSession* SwitcherSession::session = nullptr;
OrloProcess* SwitcherSession::orlo = nullptr;
QProcess* SwitcherSession::keys = nullptr;
QHash<QString, QString> SwitcherSession::windows;
QString SwitcherSession::skipReason;

}  // namespace

TEST_F(SwitcherSession, AltTabGoesBackToThePreviousWindowAndTabTabFurther)
{
    xdo({"keydown", "alt", "key", "Tab", "keyup", "alt"});
    EXPECT_TRUE(becomesActive("Beta")) << qPrintable(orlo->log());
    xdo({"keydown", "alt", "key", "Tab", "key", "Tab", "keyup", "alt"});
    EXPECT_TRUE(becomesActive("Alpha")) << "Beta in front, then Gamma, then Alpha";
}

// The list follows the order of use, not the stacking order: a window kept above stays on
// top while others are used, and focus can move without raising a window.
TEST_F(SwitcherSession, OrderIsTheOrderOfUseNotTheStackingOrder)
{
    const QString pinned = terminal("Pinned");
    const Closing closePinned{pinned};
    activate(pinned);
    session->run("wmctrl", {"-i", "-r", pinned, "-b", "add,above"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return session->output("xprop", {"-id", pinned, "_NET_WM_STATE"}).contains("ABOVE"); }));
    activate(windows["Beta"]);
    activate(windows["Gamma"]);
    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "keyup", "alt"});
    EXPECT_TRUE(becomesActive("Beta")) << "Gamma was used last, Beta before it; Pinned only stays on top";
    ASSERT_TRUE(waitForOpening(before + 1));
    const auto id = [](const QString& window) { return QString("w%1").arg(window.toULongLong()); };
    const QString listed = lastOpening();
    EXPECT_LT(listed.indexOf(id(windows["Beta"])), listed.indexOf(id(pinned))) << qPrintable(listed);

    // Input focus moved to Alpha without raising it: Gamma stays on top of it.
    activate(windows["Gamma"]);
    session->run("xdotool", {"windowfocus", "--sync", windows["Alpha"]});
    if (!VirtualSession::waitFor([&] { return active() == windows["Alpha"]; }, 2000))
        GTEST_SKIP() << qPrintable(session->windowManager()) << " does not make a window focused this way the active one";
    xdo({"keydown", "alt", "key", "Tab", "keyup", "alt"});
    EXPECT_TRUE(becomesActive("Gamma")) << qPrintable(lastOpening());
}

// Windows that some clients describe in ways of their own: a frameless Qt window lists
// KDE's "override" type before the normal one, and a sticky window is on every desktop.
TEST_F(SwitcherSession, FramelessAndStickyWindowsAreListed)
{
    QProcessEnvironment frameless = session->environment();
    frameless.insert("ORLO_TEST_WINDOW_UNDECORATED", "1");
    QProcess* plain = session->launch(VirtualSession::builtProgram("orlo-test-window"), {"Frameless"}, frameless);
    QString out;
    ASSERT_TRUE(VirtualSession::waitFor([&] { return (out += QString::fromLocal8Bit(plain->readAllStandardOutput())).contains('\n'); }));
    const QString framelessId = out.section(' ', 1).section('\n', 0, 0).trimmed();
    const Closing closeFrameless{framelessId};
    ASSERT_TRUE(session->output("xprop", {"-id", framelessId, "_NET_WM_WINDOW_TYPE"}).contains("_KDE_NET_WM_WINDOW_TYPE_OVERRIDE"));
    const QString sticky = terminal("Sticky");
    const Closing closeSticky{sticky};
    session->run("xdotool", {"set_desktop_for_window", sticky, "-1"});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return session->output("xprop", {"-id", sticky, "_NET_WM_DESKTOP"}).contains("4294967295"); }));
    activate(framelessId);
    activate(windows["Gamma"]);

    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "keyup", "alt"});
    ASSERT_TRUE(waitForOpening(before + 1));
    EXPECT_TRUE(VirtualSession::waitFor([&] { return active() == framelessId; }, 3000)) << qPrintable(lastOpening());
    EXPECT_TRUE(lastOpening().contains(QString("w%1").arg(sticky.toULongLong()))) << qPrintable(lastOpening());
}

TEST_F(SwitcherSession, ShiftTabOpensOnTheLastItemAndEscapeChangesNothing)
{
    xdo({"keydown", "alt", "key", "shift+Tab", "keyup", "alt"});
    EXPECT_TRUE(becomesActive("Qt Keys")) << qPrintable(lastOpening());

    activate(windows["Gamma"]);
    const int before = openings();
    const auto cancels = orlo->log().count("orlo.switcher: cancelled");
    xdo({"keydown", "alt", "key", "Tab", "key", "Tab", "key", "Escape", "keyup", "alt"});
    ASSERT_TRUE(waitForOpening(before + 1));
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo->log().count("orlo.switcher: cancelled") > cancels; }));
    EXPECT_EQ(active(), windows["Gamma"]);
}

TEST_F(SwitcherSession, TypingKeepsItOpenAndReturnSwitchesToTheMatch)
{
    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "type", "alph"});
    const auto stays = orlo->log().count("let go while searching: stays open");
    xdo({"keyup", "alt"});
    ASSERT_TRUE(waitForOpening(before + 1));
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo->log().count("let go while searching: stays open") > stays; }));
    EXPECT_EQ(active(), windows["Gamma"]) << "still open after the release";
    EXPECT_FALSE(session->findWindows("^Orlo Switcher$").isEmpty());
    shot("switcher-search.png");
    xdo({"key", "Return"});
    EXPECT_TRUE(becomesActive("Alpha"));

    // The keyboard is free again: keys reach the focused window.
    activate(windows["Qt Keys"]);
    xdo({"type", "z"});
    EXPECT_TRUE(VirtualSession::waitFor([] { return QString::fromLocal8Bit(keys->readAllStandardOutput()).contains("key Z"); }));
}

// The search gets what the keys type, Shift included, with Alt still held.
TEST_F(SwitcherSession, ShiftedCharactersAreTypedAsTheyAre)
{
    const QString sale = terminal("Sale 50%_off");
    const Closing closeSale{sale};
    activate(windows["Gamma"]);
    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "type", "0%_"});
    xdo({"keyup", "alt"});
    ASSERT_TRUE(waitForOpening(before + 1));
    xdo({"key", "Return"});
    EXPECT_TRUE(VirtualSession::waitFor([&] { return active() == sale; }, 3000)) << qPrintable(orlo->log());
}

TEST_F(SwitcherSession, MinimizedWindowIsListedWithItsBadgeAndComesBack)
{
    session->run("xdotool", {"windowminimize", "--sync", windows["Beta"]});
    // Some window managers (mutter) mark the window hidden a moment after it is unmapped.
    ASSERT_TRUE(VirtualSession::waitFor([&] { return session->output("xprop", {"-id", windows["Beta"], "_NET_WM_STATE"}).contains("HIDDEN"); }));
    xdo({"keydown", "alt", "key", "Tab", "type", "bet"});
    xdo({"keyup", "alt"});
    ASSERT_TRUE(VirtualSession::waitFor([] { return lastOpening().contains(QString("w%1(minimized)").arg(windows["Beta"].toULongLong())); }))
        << qPrintable(lastOpening());
    shot("switcher-minimized.png");
    xdo({"key", "Return"});
    EXPECT_TRUE(becomesActive("Beta"));
    EXPECT_FALSE(session->output("xprop", {"-id", windows["Beta"], "_NET_WM_STATE"}).contains("HIDDEN"));
}

TEST_F(SwitcherSession, WindowOnAnotherDesktopIsNotListed)
{
    const QString delta = terminal("Delta");
    session->run("wmctrl", {"-i", "-r", delta, "-t", "1"});
    // wmctrl only asks; some window managers (mutter) move the window a moment later.
    ASSERT_TRUE(VirtualSession::waitFor([&] { return session->output("xprop", {"-id", delta, "_NET_WM_DESKTOP"}).trimmed().endsWith("= 1"); }));
    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "key", "Escape", "keyup", "alt"});
    ASSERT_TRUE(waitForOpening(before + 1));
    EXPECT_FALSE(lastOpening().contains(QString::number(delta.toULongLong()))) << qPrintable(lastOpening());
    EXPECT_TRUE(lastOpening().contains(QString::number(windows["Alpha"].toULongLong())));
}

TEST_F(SwitcherSession, DisplayOpensOnTheMonitorUnderThePointer)
{
    for (const QRect& monitor : {QRect(0, 0, 1440, 900), QRect(1440, 0, 3440, 1440)}) {
        session->mouseMove(monitor.center().x(), monitor.center().y());
        const int before = openings();
        xdo({"keydown", "alt", "key", "Tab", "key", "Escape", "keyup", "alt"});
        ASSERT_TRUE(waitForOpening(before + 1));
        const QRect at = openedAt();
        EXPECT_TRUE(monitor.contains(at)) << at.x() << "," << at.y();
        EXPECT_LE(std::abs(at.center().x() - monitor.center().x()), 1);
    }
}

// Scaled by two, Qt gives the monitor on the right an origin of its own: the display is still
// centred on the monitor under the pointer, in the monitor's own pixels.
TEST_F(SwitcherSession, ScaledDisplayOpensOnTheMonitorUnderThePointer)
{
    delete orlo;
    QProcessEnvironment scaled;
    scaled.insert("QT_SCALE_FACTOR", "2");
    orlo = new OrloProcess(*session, {}, scaled);
    ASSERT_TRUE(orlo->waitForLine("orlo.switcher: started: Alt-Tab")) << qPrintable(orlo->log());
    for (const QRect& monitor : {QRect(0, 0, 1440, 900), QRect(1440, 0, 3440, 1440)}) {
        session->mouseMove(monitor.center().x(), monitor.center().y());
        xdo({"keydown", "alt", "key", "Tab"});
        QString display;
        ASSERT_TRUE(VirtualSession::waitFor([&] { return !(display = session->findWindows("^Orlo Switcher$").value(0)).isEmpty(); }));
        QRect at;
        // The window may be shown a moment before it is moved into place.
        VirtualSession::waitFor([&] { at = session->windowGeometry(display); return monitor.contains(at); }, 3000);
        xdo({"key", "Escape", "keyup", "alt"});
        EXPECT_TRUE(monitor.contains(at)) << at.x() << "," << at.y() << " " << at.width() << "x" << at.height();
        EXPECT_LE(std::abs(at.center().x() - monitor.center().x()), 2) << at.x();
        EXPECT_EQ(at.width(), 620 * 2) << "drawn at twice the size";
        ASSERT_TRUE(VirtualSession::waitFor([&] { return session->findWindows("^Orlo Switcher$").isEmpty(); }));
    }
    startOrlo({});
}

TEST_F(SwitcherSession, ClickOnARowSwitchesAndAClickElsewhereCancels)
{
    // Rows of the list: 52 for the search line, a divider, 8 of margin, then 46 each.
    auto rowCentre = [](int row) { return QPoint(openedAt().center().x(), openedAt().top() + 53 + 8 + 46 * row + 23); };
    int before = openings();
    xdo({"keydown", "alt", "key", "Tab"});
    ASSERT_TRUE(waitForOpening(before + 1));
    const QPoint alpha = rowCentre(2);  // Gamma, Beta, Alpha, Qt Keys
    session->click(alpha.x(), alpha.y());
    xdo({"keyup", "alt"});
    EXPECT_TRUE(becomesActive("Alpha")) << qPrintable(lastOpening());

    before = openings();
    xdo({"keydown", "alt", "key", "Tab"});
    ASSERT_TRUE(waitForOpening(before + 1));
    const auto cancels = orlo->log().count("orlo.switcher: cancelled");
    session->click(5, 5);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return orlo->log().count("orlo.switcher: cancelled") > cancels; }));
    xdo({"keyup", "alt"});
    EXPECT_EQ(active(), windows["Alpha"]) << "cancelled before the release: nothing is left to switch";
}

TEST_F(SwitcherSession, ListAndGridScreenshots)
{
    xdo({"keydown", "alt", "key", "Tab"});
    ASSERT_TRUE(VirtualSession::waitFor([] { return !session->findWindows("^Orlo Switcher$").isEmpty(); }));
    shot("switcher-list.png");
    xdo({"key", "Escape", "keyup", "alt"});

    startOrlo(QJsonObject{{"switcher.layout", "grid"}});
    xdo({"keydown", "alt", "key", "Tab"});
    ASSERT_TRUE(VirtualSession::waitFor([] { return !session->findWindows("^Orlo Switcher$").isEmpty(); }));
    ASSERT_TRUE(waitForOpening(1));
    EXPECT_EQ(openedAt().size(), QSize(132 * 4 + 8 * 3 + 32, 222)) << "four tiles in one row";
    shot("switcher-grid.png");
    xdo({"key", "Escape", "keyup", "alt"});
    startOrlo({});
}

TEST_F(SwitcherSession, SuperTabWhenTheCommandTriggerIsChosen)
{
    startOrlo(QJsonObject{{"switcher.trigger", "command"}});
    xdo({"keydown", "super", "key", "Tab", "keyup", "super"});
    EXPECT_TRUE(becomesActive("Beta")) << qPrintable(orlo->log());
    ASSERT_TRUE(waitForOpening(1));
    const int before = openings();
    xdo({"keydown", "alt", "key", "Tab", "keyup", "alt"});
    // Keys reach Orlo in order: once Super-Tab's opening is in, Alt-Tab's would be too.
    xdo({"keydown", "super", "key", "Tab", "key", "Escape", "keyup", "super"});
    ASSERT_TRUE(waitForOpening(before + 1));
    EXPECT_EQ(openings(), before + 1) << "Alt-Tab is no longer the switcher's";
    startOrlo({});
}

// Orlo started while another program holds Alt+Tab. The desktops' window managers hold it
// with their own bindings (mutter through XInput 2, which a grab of Orlo's is not refused
// by); under openbox, which binds nothing here, a client of the test holds it.
TEST(SwitcherKeyHeldSession, AltTabHeldElsewhereIsReportedAndTheRestOfOrloStarts)
{
    VirtualSession session;
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    xcb_connection_t* c = xcb_connect(session.display().toLocal8Bit().constData(), nullptr);
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(c);
    xcb_keycode_t* tab = xcb_key_symbols_get_keycode(symbols, 0xff09);
    ASSERT_TRUE(tab);
    if (session.windowManager() == "openbox") {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
        xcb_grab_key(c, 1, root, XCB_MOD_MASK_1, tab[0], XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        xcb_flush(c);
    }

    {
        OrloProcess orlo(session);
        EXPECT_TRUE(orlo.waitForLine("Alt-Tab is held by another program; the switcher is off")) << qPrintable(orlo.log());
        EXPECT_TRUE(orlo.waitForLine("orlo.windows: hot keys: \\d+ registered"));
        EXPECT_TRUE(orlo.waitForLine("orlo.modules: started clipboard"));
        if (session.windowManager() == "openbox") {
            // The other program lets go: Orlo notices on its own, without a restart.
            const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
            xcb_ungrab_key(c, tab[0], root, XCB_MOD_MASK_1);
            xcb_flush(c);
            EXPECT_TRUE(orlo.waitForLine("Alt-Tab is free now: the switcher is on", 20000)) << qPrintable(orlo.log());
        }
    }
    free(tab);
    xcb_key_symbols_free(symbols);
    xcb_disconnect(c);
}
