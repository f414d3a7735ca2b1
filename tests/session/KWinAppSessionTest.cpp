// The real Orlo on its Wayland backend inside KWin (kwin_wayland --virtual, two screens side
// by side), driven by its command line as a user's own key bindings would. What the tests
// check is what KWin reports: a script of the tests' own, beside Orlo's, watches the windows.
#include "VirtualSession.h"
#include "WaylandSession.h"
#include "platform/wayland/kwin/KWinPorts.h"
#include <QDir>
#include <QDBusMessage>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace orlo;
using orlo::testing::OrloProcess;
using orlo::testing::WaylandSession;

namespace {

QString described(const QRectF& r)
{
    return QStringLiteral("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
}

bool writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

class KWinAppSession : public ::testing::Test {
protected:
    // kwinShortcuts: KDE's global shortcuts file, read as the session starts.
    void start(const QByteArray& kwinShortcuts = {})
    {
        if (!kwinShortcuts.isEmpty()) {
            ASSERT_TRUE(writeFile(kwin.configHome() + "/kglobalshortcutsrc", kwinShortcuts));
        }
        // Without a tray Orlo shows its settings window once, which would take the focus.
        ASSERT_TRUE(writeFile(kwin.configHome() + "/Orlo/settings.json", R"({"app.settingsShownWithoutTray": true})"));
        ASSERT_TRUE(kwin.start()) << qPrintable(kwin.error());
        bus = std::make_unique<QDBusConnection>(kwin.connectToBus());
        QString error;
        watcher = kwin::KWinPorts::start(*bus, &error, "orlo-test-watcher");
        ASSERT_TRUE(watcher) << qPrintable(error);
        orlo = std::make_unique<OrloProcess>(kwin);
        ASSERT_TRUE(orlo->waitForLine("KWin's windows through Orlo's script")) << qPrintable(orlo->log());
    }
    void TearDown() override
    {
        orlo.reset();
        watcher.reset();
        bus.reset();
    }

    kwin::KWinDesktop& desktop() { return watcher->desktop(); }
    // The native window with this title, shown and active as KWin reports it.
    std::optional<WindowId> activeWindowTitled(const QString& title)
    {
        if (!kwin.showWindow(title)) return std::nullopt;
        const kwin::KWinWindow* w = nullptr;
        if (!WaylandSession::waitFor([&] { return (w = desktop().activeWindow()) && w->title == title; })) return std::nullopt;
        return desktop().idOf(*w);
    }
    // Orlo's switcher with Alt+Tab freed from KWin, and two windows, Beta in front of Alpha.
    std::optional<WindowId> freeAltTabBehindBeta()
    {
        // Walk Through Windows without keys, as System Settings › Shortcuts leaves it.
        start("[kwin]\nWalk Through Windows=none,Alt+Tab,Walk Through Windows\n");
        if (::testing::Test::HasFatalFailure() || !orlo->waitForLine("started: .* opens the switcher")) return std::nullopt;
        const std::optional<WindowId> alpha = activeWindowTitled("Alpha");
        return alpha && activeWindowTitled("Beta") ? alpha : std::nullopt;
    }
    bool activeIs(WindowId id)
    {
        return WaylandSession::waitFor([&] {
            const kwin::KWinWindow* active = desktop().activeWindow();
            return active && desktop().idOf(*active) == id;
        });
    }
    int orloCommand(const QStringList& words) { return kwin.run(WaylandSession::builtProgram("orlo"), words); }
    // Waits for KWin to report the window on this screen, at this frame where one is given.
    bool reported(WindowId id, int screen, std::optional<QRectF> frame = std::nullopt)
    {
        return WaylandSession::waitFor([&] {
            const kwin::KWinWindow* w = desktop().window(id);
            return w && w->screen == screen && (!frame || desktop().frameOf(*w) == *frame);
        });
    }
    QString frameOf(WindowId id)
    {
        const kwin::KWinWindow* w = desktop().window(id);
        return w ? QStringLiteral("screen %1, %2").arg(w->screen).arg(described(desktop().frameOf(*w))) : QStringLiteral("gone");
    }

    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    std::unique_ptr<QDBusConnection> bus;
    std::unique_ptr<kwin::KWinPorts> watcher;
    std::unique_ptr<OrloProcess> orlo;
};

TEST_F(KWinAppSession, ChoosesWaylandAndSnapsTheFocusedNativeWindowThenSendsItToTheOtherScreen)
{
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_TRUE(orlo->log().contains(QRegularExpression("Wayland compositor offers: .*kwin-scripting"))) << qPrintable(orlo->log());
    const std::optional<WindowId> id = activeWindowTitled("Delta");
    ASSERT_TRUE(id) << qPrintable(orlo->log());
    ASSERT_TRUE(reported(*id, 0));
    const QList<kwin::KWinScreen> screens = desktop().screens();
    ASSERT_EQ(screens.size(), 2);

    ASSERT_EQ(orloCommand({"snap", "left-half"}), 0) << qPrintable(orlo->log());
    const QRectF left = screens[0].workArea;
    EXPECT_TRUE(reported(*id, 0, QRectF(left.x(), left.y(), left.width() / 2, left.height()))) << qPrintable(frameOf(*id));

    // The same place on the other screen.
    ASSERT_EQ(orloCommand({"snap", "next-display"}), 0) << qPrintable(orlo->log());
    const QRectF right = screens[1].workArea;
    EXPECT_TRUE(reported(*id, 1, QRectF(right.x(), right.y(), right.width() / 2, right.height()))) << qPrintable(frameOf(*id));
}

TEST_F(KWinAppSession, AltTabFreedFromKWinOpensTheSwitcherWhichSwitchesToThePreviousWindow)
{
    const std::optional<WindowId> alpha = freeAltTabBehindBeta();
    ASSERT_TRUE(alpha) << qPrintable(orlo ? orlo->log() : QString());

    // The press KGlobalAccel sends for Alt+Tab. No key is held once the display has the
    // keyboard: the switch happens at once, as after a quick Alt+Tab.
    QDBusMessage press = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/component/app_orlo_Orlo",
                                                        "org.kde.kglobalaccel.Component", "invokeShortcut");
    bus->call(press << QStringLiteral("Alt+Tab"));
    ASSERT_TRUE(orlo->waitForLine("opened at .* with 2 items")) << qPrintable(orlo->log());
    ASSERT_TRUE(orlo->waitForLine("switching to w")) << qPrintable(orlo->log());
    EXPECT_TRUE(activeIs(*alpha)) << qPrintable(orlo->log());
}

TEST_F(KWinAppSession, AltTabTypedOnTheKeyboardOpensTheSwitcherWhichSwitchesToThePreviousWindow)
{
    const std::optional<WindowId> alpha = freeAltTabBehindBeta();
    ASSERT_TRUE(alpha) << qPrintable(orlo ? orlo->log() : QString());

    // The real keys, through KWin's fake input: KWin sees them as from a keyboard of the seat.
    ASSERT_TRUE(kwin.press({"Alt+Tab"}));
    ASSERT_TRUE(orlo->waitForLine("opened at .* with 2 items")) << qPrintable(orlo->log());
    ASSERT_TRUE(orlo->waitForLine("switching to w")) << qPrintable(orlo->log());
    EXPECT_TRUE(activeIs(*alpha)) << qPrintable(orlo->log());
}

}  // namespace
