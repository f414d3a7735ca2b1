// Snapping a native window on KWin (Wayland) with Orlo's windows module on the KWin ports and
// KDE's global shortcuts: the module's own hot keys, pressed through the shortcuts service
// (invokeShortcut, the signal a key press sends; no key can be typed into kwin_wayland
// --virtual from outside), move the window to the next screen and to the left half of the
// right screen's work area. Orlo's other ports are the unit tests' fakes.
#include "FakePlatform.h"
#include "input/HotKeys.h"
#include "kit/Defaults.h"
#include "kit/OrloContext.h"
#include "kit/Permissions.h"
#include "WaylandSession.h"
#include "platform/Geometry.h"
#include "platform/linux/KGlobalAccelHotKeys.h"
#include "platform/linux/QtKeys.h"
#include "platform/wayland/kwin/KWinPorts.h"
#include "windows/WindowsModule.h"
#include <gtest/gtest.h>

using namespace orlo;
using orlo::testing::WaylandSession;

namespace {

TEST(KWinSnapSession, HotKeysMoveANativeWindowToTheNextScreenAndItsLeftHalf)
{
    WaylandSession kwin{QStringLiteral("kwin"), WaylandSession::User::OfTheTests};
    ASSERT_TRUE(kwin.start()) << qPrintable(kwin.error());
    ASSERT_TRUE(kwin.showWindow("Delta"));
    QDBusConnection bus = kwin.connectToBus();
    QString error;
    auto ports = kwin::KWinPorts::start(bus, &error);
    ASSERT_TRUE(ports) << qPrintable(error);

    fakes::FakePlatform platform;
    platform.fakeAccessibility->trusted = true;
    ports->install(platform);
    platform.hotKeys = std::make_unique<KGlobalAccelHotKeys>(bus, *platform.keyboardLayout);
    const QString component = static_cast<KGlobalAccelHotKeys&>(*platform.hotKeys).component();
    Defaults defaults(*platform.settings);
    Permissions permissions(*platform.accessibility);
    HotKeys hotKeys(*platform.hotKeys);
    AppEvents events;
    OrloContext context{platform, defaults, hotKeys, permissions, events};
    WindowsModule module(context);
    module.start();

    kwin::KWinDesktop& desktop = ports->desktop();
    const kwin::KWinWindow* delta = nullptr;
    ASSERT_TRUE(WaylandSession::waitFor([&] { return (delta = desktop.activeWindow()) && delta->title == "Delta"; }));
    const WindowId id = desktop.idOf(*delta);
    ASSERT_EQ(delta->screen, 0);
    auto press = [&](const QString& action) {
        QDBusMessage call = QDBusMessage::createMethodCall("org.kde.kglobalaccel", "/component/" + component,
                                                           "org.kde.kglobalaccel.Component", "invokeShortcut");
        bus.call(call << action);
    };
    // What KWin reports, not what Orlo asked for.
    auto reported = [&](int screen, std::optional<QRectF> frame = std::nullopt) {
        return WaylandSession::waitFor([&] {
            const kwin::KWinWindow* w = desktop.window(id);
            return w && w->screen == screen && (!frame || desktop.frameOf(*w) == *frame);
        });
    };

    // The module's defaults: Control-Option-Command-Right and Control-Option-Left.
    press(KGlobalAccelHotKeys::actionName(*qtKeyCombination(KeyCode::RightArrow, 0x1900, *platform.keyboardLayout)));
    ASSERT_TRUE(reported(1));
    press(KGlobalAccelHotKeys::actionName(*qtKeyCombination(KeyCode::LeftArrow, 0x1800, *platform.keyboardLayout)));
    const QRectF work = desktop.screens()[1].workArea;
    EXPECT_TRUE(reported(1, QRectF(work.x(), work.y(), work.width() / 2, work.height())))
        << qPrintable(QStringLiteral("%1,%2 %3x%4").arg(desktop.window(id)->frame.x()).arg(desktop.window(id)->frame.y())
                          .arg(desktop.window(id)->frame.width()).arg(desktop.window(id)->frame.height()));
    module.stop();
}

}  // namespace
