// The X11 input ports against a real X server: hot keys, the keyboard tap and the window
// under the pointer.
#include "VirtualSession.h"
#include "input/EventTap.h"
#include "input/HotKeys.h"
#include "platform/x11/X11EventTap.h"
#include "platform/linux/KeyCodeMap.h"
#include "platform/x11/X11HotKeyService.h"
#include "platform/x11/X11KeyboardLayout.h"
#include "platform/x11/X11WindowServer.h"
#include "platform/x11/XConnection.h"
#include <QSignalSpy>
#include <gtest/gtest.h>
#include <xcb/xinput.h>

using namespace orlo;
using orlo::testing::VirtualSession;

namespace {

class InputSession : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        session = new VirtualSession;
        ASSERT_TRUE(session->start()) << qPrintable(session->error());
    }
    static void TearDownTestSuite() { delete session; }

    std::unique_ptr<x11::XConnection> connect()
    {
        auto x = x11::XConnection::open(session->display().toLocal8Bit().constData(), nullptr);
        EXPECT_TRUE(x);
        return x;
    }
    // xdotool without --clearmodifiers, so that lock keys stay as they are.
    void press(const QString& keys) { session->run("xdotool", {"key", keys}); }
    // Keys reach Orlo in the order they are pressed: once a key pressed after others has
    // fired, those others have arrived, or never will.
    static bool seenAfter(HotKeys& hotKeys, const QString& key, quint32 code)
    {
        bool fired = false;
        const auto token = hotKeys.registerHotKey({code, ModifierFlag::Control | ModifierFlag::Shift}, [&] { fired = true; });
        if (!token) return false;
        session->run("xdotool", {"key", "ctrl+shift+" + key});
        const bool seen = VirtualSession::waitFor([&] { return fired; });
        hotKeys.unregister(token);
        return seen;
    }

    static VirtualSession* session;
};
VirtualSession* InputSession::session = nullptr;

// A window of another process that reports the keys it receives.
struct KeyWindow {
    QProcess* process;
    QString seen;
    explicit KeyWindow(VirtualSession& s) : process(s.launch(VirtualSession::builtProgram("orlo-test-window"), {"Keys"}))
    {
        EXPECT_TRUE(VirtualSession::waitFor([&] { return read().contains("ready"); }));
        // Keys go to the focused window: wait until it is this one.
        const QString id = seen.section("ready ", 1).section('\n', 0, 0).trimmed();
        s.run("xdotool", {"windowactivate", "--sync", id});
        EXPECT_TRUE(VirtualSession::waitFor([&] { return s.output("xdotool", {"getwindowfocus"}) == id; }));
    }
    QString read() { return seen += QString::fromLocal8Bit(process->readAllStandardOutput()); }
};

}  // namespace

TEST_F(InputSession, HotKeyFiresWhateverTheLockKeysAndStopsWhenUnregistered)
{
    auto x = connect();
    x11::X11KeyboardLayout serviceLayout(*x);
    x11::X11HotKeyService service(*x, serviceLayout);
    HotKeys hotKeys(service);
    int fired = 0;
    const auto token = hotKeys.registerHotKey({40, ModifierFlag::Control | ModifierFlag::Option}, [&] { ++fired; });
    ASSERT_TRUE(token);

    press("ctrl+alt+k");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 1; }));
    press("Num_Lock");
    press("ctrl+alt+k");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 2; })) << "with Num Lock on";
    press("Num_Lock");
    press("Caps_Lock");
    press("ctrl+alt+k");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 3; })) << "with Caps Lock on";
    press("Caps_Lock");
    press("ctrl+k");  // not the combination
    hotKeys.unregister(token);
    press("ctrl+alt+k");
    ASSERT_TRUE(seenAfter(hotKeys, "q", 12));
    EXPECT_EQ(fired, 3);
}

TEST_F(InputSession, CombinationHeldByAnotherClientIsRefused)
{
    auto other = connect();
    x11::X11KeyboardLayout otherServiceLayout(*other);
    x11::X11HotKeyService otherService(*other, otherServiceLayout);
    ASSERT_TRUE(otherService.registerHotKey(1, 38, 0x1800));  // ctrl+alt+J, held by another client

    auto x = connect();
    x11::X11KeyboardLayout serviceLayout(*x);
    x11::X11HotKeyService service(*x, serviceLayout);
    HotKeys hotKeys(service);
    EXPECT_FALSE(hotKeys.registerHotKey({38, ModifierFlag::Control | ModifierFlag::Option}, [] {}));
    const auto next = hotKeys.registerHotKey({37, ModifierFlag::Control | ModifierFlag::Option}, [] {});
    ASSERT_TRUE(next);
    EXPECT_EQ(next->id, 2u);  // the refusal consumed id 1
}

TEST_F(InputSession, TapSwallowsOneKeyPassesAnotherAndCanSeeEveryKey)
{
    KeyWindow window(*session);
    auto x = connect();
    x11::X11KeyboardLayout backendLayout(*x);
    x11::X11EventTapBackend backend(*x, backendLayout);
    QList<KeyEvent> handled;
    EventTap tap(backend, {KeyEventType::KeyDown, KeyEventType::FlagsChanged}, [&](KeyEventType, const KeyEvent& e) {
        handled << e;
        return e.keyCode == 38;  // J is swallowed, everything else passes
    });
    const quint64 ctrlAlt = ModifierFlag::Control | ModifierFlag::Option;
    tap.setWatchedKeys({{38, ctrlAlt}, {40, ctrlAlt}});
    ASSERT_TRUE(tap.start());

    press("ctrl+alt+j");
    press("ctrl+alt+k");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return window.read().contains("key K "); })) << qPrintable(window.read());
    EXPECT_FALSE(window.read().contains("key J "));
    // Modifier releases that arrive while the swallowed key is held are the tap's too.
    handled.removeIf([](const KeyEvent& e) { return e.type != KeyEventType::KeyDown; });
    ASSERT_EQ(handled.size(), 2);
    EXPECT_EQ(handled[0].keyCode, 38u);
    EXPECT_EQ(handled[0].flags & ModifierFlag::ShortcutMask, ctrlAlt);
    EXPECT_EQ(handled[1].keyCode, 40u);

    // Seeing every key: the window gets none of them, the Option press is a flags change.
    handled.clear();
    ASSERT_TRUE(tap.setSeesAllKeys(true));
    press("alt+a");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return handled.size() >= 3; }));
    EXPECT_EQ(handled[0].type, KeyEventType::FlagsChanged);
    EXPECT_TRUE(handled[0].flags & ModifierFlag::Option);
    EXPECT_EQ(handled[1].keyCode, 0u);
    EXPECT_EQ(handled[2].type, KeyEventType::FlagsChanged);
    EXPECT_FALSE(handled[2].flags & ModifierFlag::Option);
    tap.setSeesAllKeys(false);
    press("b");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return window.read().contains("key B "); }));
    EXPECT_FALSE(window.read().contains("key A ")) << qPrintable(window.read());
}

TEST_F(InputSession, TapWhoseKeyAnotherClientHoldsDoesNotStart)
{
    auto other = connect();
    x11::X11KeyboardLayout otherServiceLayout(*other);
    x11::X11HotKeyService otherService(*other, otherServiceLayout);
    ASSERT_TRUE(otherService.registerHotKey(1, 48, 0x800));  // Alt+Tab, as a window manager holds it

    auto x = connect();
    x11::X11KeyboardLayout backendLayout(*x);
    x11::X11EventTapBackend backend(*x, backendLayout);
    int notices = 0;
    EventTap tap(backend, {KeyEventType::KeyDown}, [&](KeyEventType, const KeyEvent&) { return ++notices, true; });
    tap.setWatchedKeys({{48, ModifierFlag::Option}, {48, ModifierFlag::Option | ModifierFlag::Shift}});
    EXPECT_FALSE(tap.start());
    EXPECT_FALSE(tap.isRunning());
    // Nothing keeps trying behind the owner's back, and Alt+Shift+Tab was let go again.
    VirtualSession::waitFor([] { return false; }, 300);
    EXPECT_EQ(notices, 0);
    x11::X11KeyboardLayout probeLayout(*x);
    x11::X11HotKeyService probe(*x, probeLayout);
    EXPECT_TRUE(probe.registerHotKey(2, 48, 0x800 | 0x200));
}

TEST_F(InputSession, TapTakesTheKeyboardOnceAnotherClientLetsItGo)
{
    auto other = connect();
    auto* grab = xcb_grab_keyboard_reply(other->connection(),
        xcb_grab_keyboard(other->connection(), 0, other->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC), nullptr);
    ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
    free(grab);

    auto x = connect();
    x11::X11KeyboardLayout backendLayout(*x);
    x11::X11EventTapBackend backend(*x, backendLayout);
    int keys = 0;
    EventTap tap(backend, {KeyEventType::KeyDown}, [&](KeyEventType, const KeyEvent&) { return ++keys, true; });
    ASSERT_TRUE(tap.start());
    EXPECT_FALSE(tap.setSeesAllKeys(true));  // the other client holds the keyboard

    xcb_ungrab_keyboard(other->connection(), XCB_CURRENT_TIME);
    other->flush();
    // The tap keeps trying; once it holds the keyboard, keys reach it.
    EXPECT_TRUE(VirtualSession::waitFor([&] {
        press("q");
        return keys > 0;
    }));
}

TEST_F(InputSession, WhileTheTapSeesEveryKeyHotKeysStayQuiet)
{
    auto x = connect();
    x11::X11KeyboardLayout serviceLayout(*x);
    x11::X11HotKeyService service(*x, serviceLayout);
    HotKeys hotKeys(service);
    int fired = 0;
    ASSERT_TRUE(hotKeys.registerHotKey({40, ModifierFlag::Control | ModifierFlag::Option}, [&] { ++fired; }));
    x11::X11KeyboardLayout backendLayout(*x);
    x11::X11EventTapBackend backend(*x, backendLayout);
    int tapped = 0;
    EventTap tap(backend, {KeyEventType::KeyDown}, [&](KeyEventType, const KeyEvent& e) { return tapped += e.keyCode == 40, true; });
    ASSERT_TRUE(tap.start());
    ASSERT_TRUE(tap.setSeesAllKeys(true));
    press("ctrl+alt+k");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return tapped == 1; }));
    EXPECT_EQ(fired, 0);
    tap.stop();
    press("ctrl+alt+k");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 1; }));
}

TEST_F(InputSession, AKeyHeldThroughXInputIsRefusedWhileOrlosOwnAndFreeKeysAreNotHeld)
{
    // mutter's way: an XInput 2 passive grab, of which a core grab hears nothing.
    auto other = connect();
    xcb_connection_t* c = other->connection();
    free(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS, ctrlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
    free(xcb_input_xi_passive_grab_device_reply(
        c, xcb_input_xi_passive_grab_device(c, XCB_CURRENT_TIME, other->root(), XCB_NONE, *xKeyCode(34),
                                            XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                            XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                            XCB_INPUT_GRAB_OWNER_NO_OWNER, &mask, &ctrlAlt),
        nullptr));

    auto x = connect();
    int fired = 0;
    {
        x11::X11KeyboardLayout serviceLayout(*x);
    x11::X11HotKeyService service(*x, serviceLayout);
        HotKeys hotKeys(service);
        const quint64 controlOption = ModifierFlag::Control | ModifierFlag::Option;
        EXPECT_FALSE(hotKeys.registerHotKey({34, controlOption}, [] {}));  // I
        EXPECT_TRUE(hotKeys.isHeldByAnotherApp({34, controlOption}));
        ASSERT_TRUE(hotKeys.registerHotKey({40, controlOption}, [&] { ++fired; }));  // K
        EXPECT_FALSE(hotKeys.isHeldByAnotherApp({40, controlOption}));
        EXPECT_FALSE(hotKeys.isHeldByAnotherApp({38, controlOption}));
        // Asking took nothing away: the key still reaches Orlo.
        press("ctrl+alt+k");
        EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 1; }));
    }
    // Orlo never leaves a grabbed key behind: once the service is gone, another client may
    // take the key with every lock variant.
    auto later = connect();
    x11::X11KeyboardLayout laterServiceLayout(*later);
    x11::X11HotKeyService laterService(*later, laterServiceLayout);
    EXPECT_TRUE(laterService.registerHotKey(1, 40, 0x1800));
}

TEST_F(InputSession, AfterALayoutChangeHotKeysStayOnTheirKeysAndTheirCharactersFollow)
{
    auto x = connect();
    x11::X11KeyboardLayout serviceLayout(*x);
    x11::X11HotKeyService service(*x, serviceLayout);
    x11::X11KeyboardLayout layout(*x);
    HotKeys hotKeys(service);
    int fired = 0;
    // The key right of T: Y on a U.S. keyboard, Z on a German one.
    ASSERT_TRUE(hotKeys.registerHotKey({16, ModifierFlag::Control | ModifierFlag::Option}, [&] { ++fired; }));
    EXPECT_EQ(layout.character(16), "y");
    press("ctrl+alt+y");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return fired == 1; }));

    QSignalSpy changed(&layout, &KeyboardLayout::changed);
    // The session is the suite's: its layout is given back whatever happens here.
    struct UsLayoutAfterwards {
        ~UsLayoutAfterwards() { session->run("setxkbmap", {"us"}); }
    } usLayoutAfterwards;
    ASSERT_EQ(session->run("setxkbmap", {"de"}), 0);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return changed.count() > 0; }));
    EXPECT_EQ(layout.character(16), "z");
    press("ctrl+alt+z");
    EXPECT_TRUE(VirtualSession::waitFor([&] { return fired == 2; })) << "the German Z";
    press("ctrl+alt+y");  // now the key at the U.S. Z
    ASSERT_TRUE(seenAfter(hotKeys, "q", 12));
    EXPECT_EQ(fired, 2);
}

TEST_F(InputSession, TheWindowUnderThePointerIsFoundThroughAWindowManagersInputOnlyCover)
{
    KeyWindow window(*session);
    const QString id = window.seen.section("ready ", 1).section('\n', 0, 0).trimmed();
    const QPoint centre = session->frameGeometry(id).center();
    auto x = connect();
    x11::X11WindowServer server(*x);
    ASSERT_TRUE(server.windowAt(centre));
    EXPECT_EQ(QString::number(server.windowAt(centre)->id), id);

    // While a window manager moves a window, an input-only window of its own covers the screen.
    auto other = connect();
    xcb_connection_t* c = other->connection();
    const xcb_window_t cover = xcb_generate_id(c);
    const quint32 overrideRedirect = 1;
    xcb_create_window(c, 0, cover, other->root(), 0, 0, 4000, 4000, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    xcb_map_window(c, cover);
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));  // mapped once answered
    const auto found = server.windowAt(centre);
    ASSERT_TRUE(found) << "the cover hid the window";
    EXPECT_EQ(QString::number(found->id), id);
    xcb_destroy_window(c, cover);
    other->flush();
}
