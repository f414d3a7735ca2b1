// Orlo's script inside a real KWin on Wayland (kwin_wayland --virtual, two screens side by
// side): the native windows it reports, activating one, placing one, and the script left
// behind by an Orlo that did not stop in order.
#include "platform/wayland/kwin/KWinPorts.h"
#include "platform/wayland/kwin/KWinScreens.h"
#include "platform/wayland/kwin/KWinWindowCatalog.h"
#include "platform/wayland/kwin/KWinWindowServer.h"
#include "platform/Geometry.h"
#include "WaylandSession.h"
#include <QDBusConnection>
#include <QDBusReply>
#include <gtest/gtest.h>

using namespace orlo;
using orlo::testing::WaylandSession;

namespace {

class KWinScriptSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(kwin.start()) << qPrintable(kwin.error());
        bus = std::make_unique<QDBusConnection>(kwin.connectToBus());
        ASSERT_TRUE(bus->isConnected());
    }
    void TearDown() override
    {
        ports.reset();
        bus.reset();
    }
    void startPorts()
    {
        QString error;
        ports = kwin::KWinPorts::start(*bus, &error);
        ASSERT_TRUE(ports) << qPrintable(error);
        ports->install(platform);
    }
    bool scriptLoaded()
    {
        const QDBusReply<bool> loaded = bus->call(QDBusMessage::createMethodCall(
            "org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting", "isScriptLoaded") << QString(kwin::KWinScriptBridge::pluginName));
        return loaded.isValid() && loaded.value();
    }
    // The report's window with this title, once KWin has reported it.
    const kwin::KWinWindow* windowTitled(const QString& title)
    {
        const kwin::KWinWindow* found = nullptr;
        WaylandSession::waitFor([&] {
            for (const kwin::KWinWindow* w : ports->desktop().topFirst())
                if (w->title == title) found = w;
            return found != nullptr;
        });
        return found;
    }

    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    std::unique_ptr<QDBusConnection> bus;
    std::unique_ptr<kwin::KWinPorts> ports;
    Platform platform;
};

TEST_F(KWinScriptSession, ListsNativeWindowsMostRecentFirstAndActivatesTheChosenOne)
{
    ASSERT_TRUE(kwin.showWindow("Alpha"));
    ASSERT_TRUE(kwin.showWindow("Beta"));
    startPorts();
    ASSERT_TRUE(windowTitled("Alpha") && windowTitled("Beta"));

    auto titles = [&] {
        QStringList list;
        for (const ScreenWindow& w : platform.windowCatalog->onScreenWindows()) list << w.name;
        return list;
    };
    // Beta came last, so KWin activated it last.
    EXPECT_EQ(titles(), (QStringList{"Beta", "Alpha"}));
    QList<RunningApp> apps = platform.windowCatalog->runningApplications();
    ASSERT_EQ(apps.size(), 2);
    EXPECT_TRUE(apps[0].regular);

    const ScreenWindow alpha = platform.windowCatalog->onScreenWindows().last();
    platform.windowCatalog->raise(alpha.number, false);
    EXPECT_TRUE(WaylandSession::waitFor([&] { return titles() == QStringList{"Alpha", "Beta"}; })) << qPrintable(titles().join(", "));
    EXPECT_EQ(platform.workspace->frontmostApplication()->pid, alpha.pid);
}

TEST_F(KWinScriptSession, PlacesANativeWindowOnTheRightScreensWorkArea)
{
    ASSERT_TRUE(kwin.showWindow("Gamma"));
    startPorts();
    const kwin::KWinWindow* gamma = windowTitled("Gamma");
    ASSERT_TRUE(gamma);
    const WindowId id = ports->desktop().idOf(*gamma);

    const QList<ScreenInfo> screens = platform.screens->screens();
    ASSERT_EQ(screens.size(), 2);
    const double primaryHeight = screens[0].frame.height();
    const QRectF right = flipped(screens[1].visibleFrame, primaryHeight);
    EXPECT_EQ(right.left(), screens[0].frame.width());
    const QRectF leftHalf(right.x(), right.y(), right.width() / 2, right.height());
    platform.windowServer->setFrame(id, leftHalf);
    // The report after the move, not the frame Orlo noted when it asked.
    EXPECT_TRUE(WaylandSession::waitFor([&] {
        const kwin::KWinWindow* now = ports->desktop().window(id);
        return now && ports->desktop().frameOf(*now) == leftHalf && now->screen == 1;
    }));
    EXPECT_EQ(platform.windowServer->frame(id), leftHalf);
}

TEST_F(KWinScriptSession, UnloadsItsScriptWhenItStopsAndTakesOverOneLeftBehind)
{
    startPorts();
    EXPECT_TRUE(scriptLoaded());
    ports.reset();
    EXPECT_FALSE(scriptLoaded());

    // An Orlo killed before it could unload leaves its script in KWin: the next one replaces it.
    ASSERT_TRUE(kwin.loadScript(kwin::KWinScriptBridge::pluginName, "print('left behind');"));
    ASSERT_TRUE(scriptLoaded());
    startPorts();
    EXPECT_TRUE(scriptLoaded());
    ports.reset();
    EXPECT_FALSE(scriptLoaded());
}

}  // namespace
