#include "FakePlatform.h"
#include "input/HotKeys.h"
#include "input/Shortcut.h"
#include "input/ShortcutRecorder.h"
#include "input/TakenKeysBox.h"
#include "platform/wayland/SwayConfigKeys.h"
#include <QLabel>
#include <QApplication>
#include <gtest/gtest.h>

using namespace orlo;
using namespace orlo::ModifierFlag;

TEST(Shortcut, GlyphLabelsOrderTheGlyphsAndNameKeys)
{
    fakes::FakeKeyboardLayout layout;
    const auto glyphs = Shortcut::LabelStyle::Glyphs;
    EXPECT_EQ(Shortcut({0, Command | Shift}).label(layout, glyphs), QString("⇧⌘A"));
    EXPECT_EQ(Shortcut({0, 0}).label(layout, glyphs), QString("A"));
    EXPECT_EQ(Shortcut({KeyCode::LeftArrow, Command | Shift | Option | Control}).label(layout, glyphs), QString("⌃⌥⇧⌘←"));
    EXPECT_EQ(Shortcut({KeyCode::Space, Option}).label(layout, glyphs), QString("⌥Space"));
    EXPECT_EQ(Shortcut({105, Control}).label(layout, glyphs), QString("⌃#105"));  // no character in the layout
    const QStringList names = {"↩", "⇥", "Space", "⌫", "⎋", "←", "→", "↓", "↑"};
    const quint32 codes[] = {36, 48, 49, 51, 53, 123, 124, 125, 126};
    for (int i = 0; i < names.size(); ++i) EXPECT_EQ(Shortcut::keyName(codes[i], layout, glyphs), names[i]);
}

TEST(Shortcut, WordLabelsReadAsLinuxUsersWriteThem)
{
    fakes::FakeKeyboardLayout layout;
    const auto words = Shortcut::LabelStyle::Words;
    EXPECT_EQ(Shortcut({KeyCode::LeftArrow, Option | Control}).label(layout, words), QString("Ctrl+Alt+←"));
    EXPECT_EQ(Shortcut({KeyCode::V, Shift | Command}).label(layout, words), QString("Super+Shift+V"));
    EXPECT_EQ(Shortcut({KeyCode::LeftArrow, Command | Shift | Option | Control}).label(layout, words),
              QString("Super+Ctrl+Alt+Shift+←"));
    EXPECT_EQ(Shortcut({105, 0}).label(layout, words), QString("#105"));
    const QStringList names = {"Enter", "Tab", "Space", "Backspace", "Esc", "↑"};
    const quint32 codes[] = {36, 48, 49, 51, 53, 126};
    for (int i = 0; i < names.size(); ++i) EXPECT_EQ(Shortcut::keyName(codes[i], layout, words), names[i]);
#ifndef Q_OS_MACOS
    EXPECT_EQ(Shortcut::paste().label(layout), QString("Ctrl+V"));
#endif
}

TEST(Shortcut, CarbonModifiers)
{
    EXPECT_EQ(Shortcut({0, Control | Option | Command}).carbonModifiers(), 0x1900u);
    EXPECT_EQ(Shortcut({0, Shift}).carbonModifiers(), 0x200u);
    EXPECT_EQ(Shortcut({0, CapsLock}).carbonModifiers(), 0u);
}

TEST(Shortcut, JsonRoundTripKeepsUnknownBitsAndRejectsBadFields)
{
    const Shortcut s{9, Command | Shift | 0x100 | CapsLock};
    EXPECT_EQ(Shortcut::fromJson(s.toJson()), s);
    EXPECT_EQ(Shortcut::fromJson(R"({"modifiers": 1179648, "keyCode": 9})"), Shortcut({9, 1179648}));
    for (const char* bad : {R"({"keyCode": 9})", R"({"modifiers": 0})", R"({"keyCode": "9", "modifiers": 0})",
                            R"({"keyCode": -1, "modifiers": 0})", R"({"keyCode": 4294967296, "modifiers": 0})",
                            R"({"keyCode": 1.5, "modifiers": 0})", "[]", "garbage"})
        EXPECT_FALSE(Shortcut::fromJson(bad).has_value()) << bad;
}

TEST(Shortcut, ModifiersAtTheTopOfTheWordReadBackAsWritten)
{
    // 2^64 - 2048, the largest double below 2^64, and 2^63, where JSON's integers end.
    for (const char* stored : {R"({"keyCode":4294967295,"modifiers":18446744073709549568})",
                               R"({"keyCode":9,"modifiers":9223372036854775808})"}) {
        const auto read = Shortcut::fromJson(stored);
        ASSERT_TRUE(read.has_value()) << stored;
        EXPECT_EQ(Shortcut::fromJson(read->toJson()), read) << stored;
    }
    EXPECT_EQ(Shortcut::fromJson(R"({"keyCode":9,"modifiers":9223372036854775808})")->modifiers, 1ull << 63);
    // 2^64 - 1 reads as the double 2^64, one beyond the word.
    EXPECT_FALSE(Shortcut::fromJson(R"({"keyCode":9,"modifiers":18446744073709551615})").has_value());
}

TEST(HotKeys, IdsGrowFromOneAndRefusalsConsumeTheirId)
{
    fakes::FakeHotKeyService service;
    service.refusedKeyCodes = {40};
    HotKeys hotKeys(service);
    int fired = 0;
    auto first = hotKeys.registerHotKey({0, Command}, [&] { ++fired; });
    auto refused = hotKeys.registerHotKey({40, Command}, [&] { fired += 100; });
    auto third = hotKeys.registerHotKey({9, Command | Shift}, [&] { fired += 10; });
    ASSERT_TRUE(first && third);
    EXPECT_FALSE(refused);
    EXPECT_EQ(first->id, 1u);
    EXPECT_EQ(third->id, 3u);
    EXPECT_EQ(service.registered.value(3).second, 0x300u);
    service.press(3);
    service.press(2);   // never registered: nothing runs
    service.press(99);
    EXPECT_EQ(fired, 10);
    EXPECT_TRUE(hotKeys.dispatch(99));

    hotKeys.unregister(QList<HotKeys::Token>{*first, *third});
    hotKeys.unregister(first);  // twice is harmless
    hotKeys.unregister(refused);
    service.press(1);
    EXPECT_EQ(fired, 10);
    EXPECT_TRUE(service.registered.isEmpty());
    EXPECT_EQ(hotKeys.registerHotKey({0, Command}, [] {})->id, 4u);
}

TEST(ShortcutRecorder, NeedsControlOptionOrCommandAndEscapeCancels)
{
    using R = ShortcutRecorder;
    EXPECT_TRUE(std::holds_alternative<R::Beep>(R::decide(9, 0)));
    EXPECT_TRUE(std::holds_alternative<R::Beep>(R::decide(9, Shift | CapsLock)));
    EXPECT_TRUE(std::holds_alternative<R::Cancel>(R::decide(KeyCode::Escape, 0)));
    EXPECT_TRUE(std::holds_alternative<R::Cancel>(R::decide(KeyCode::Escape, Command | Shift)));
    const auto recorded = R::decide(9, Command | Shift | CapsLock | Function | NumericPad);
    ASSERT_TRUE(std::holds_alternative<Shortcut>(recorded));
    EXPECT_EQ(std::get<Shortcut>(recorded), Shortcut({9, Command | Shift}));
}

TEST(ShortcutRecorder, RecordsTheNextKeyAndClickingAgainStopsWithoutChange)
{
    fakes::FakeKeyboardLayout layout;
    ShortcutRecorder recorder(layout, {9, Command | Shift}, {0, Command});
    std::optional<Shortcut> changed;
    QObject::connect(&recorder, &ShortcutRecorder::shortcutChanged, [&](const Shortcut& s) { changed = s; });
    recorder.startRecording();
    auto press = [](quint32 code, quint64 flags) {
        QKeyEvent e(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, code, 0, quint32(flags));
        QCoreApplication::sendEvent(qApp, &e);
    };
    press(40, 0);                      // beeps, keeps recording
    press(KeyCode::Option, Option);    // a modifier alone is not a shortcut
    EXPECT_TRUE(recorder.isRecording());
    press(40, Control | Option);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(changed, Shortcut({40, Control | Option}));

    changed.reset();
    recorder.startRecording();
    press(KeyCode::Escape, 0);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_FALSE(changed.has_value());
}

TEST(HotKeys, AFreeShortcutIsOneOrloHoldsOrOneTheSystemGrantsAndLetsGoAtOnce)
{
    fakes::FakeHotKeyService service;
    service.refusedCombos = {{KeyCode::LeftArrow, 0x1800}};
    HotKeys hotKeys(service);
    ASSERT_TRUE(hotKeys.registerHotKey({KeyCode::RightArrow, Control | Option}, [] {}));
    EXPECT_TRUE(hotKeys.isFree({KeyCode::RightArrow, Control | Option}));
    EXPECT_FALSE(hotKeys.isFree({KeyCode::LeftArrow, Control | Option}));
    EXPECT_TRUE(hotKeys.isFree({KeyCode::LeftArrow, Control | Option | Command}));
    // Only Orlo's own hot key is left held.
    EXPECT_EQ(service.registered.size(), 1);
}

TEST(Shortcut, NameLabelsUseTheKeyNamesOfWindowManagersSettings)
{
    fakes::FakeKeyboardLayout layout;
    EXPECT_EQ((Shortcut{KeyCode::LeftArrow, Control | Option}).label(layout, Shortcut::LabelStyle::Names), "Control+Alt+Left");
    EXPECT_EQ((Shortcut{KeyCode::Delete, Control | Option | Command}).label(layout, Shortcut::LabelStyle::Names),
              "Super+Control+Alt+BackSpace");
    EXPECT_EQ((Shortcut{KeyCode::Return, Control | Shift}).label(layout, Shortcut::LabelStyle::Names), "Control+Shift+Return");
}

TEST(TakenKeysBox, CommandsComeOneLinePerTakenKeyAfterASentenceOnWhereTheyGo)
{
    fakes::FakeKeyboardLayout layout;
    const Shortcut left{KeyCode::LeftArrow, Control | Option};
    const QList<HotKeys::Taken> taken{{"windows", "Left half", left, "orlo snap left-half"},
                                      {"windows", "Left third", left, "orlo snap left-third"},
                                      {"clipboard", "Clipboard history", {KeyCode::V, Command | Shift}},
                                      {"switcher", "Window Switcher", {KeyCode::Tab, Option}, "orlo switcher"}};
    fakes::FakeHotKeyService service;
    HotKeys hotKeys(service);
    const QStringList lines = TakenKeysBox::commandsText(taken, hotKeys, layout).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith("In your window manager's keyboard settings")) << qPrintable(lines[0]);
    EXPECT_EQ(lines[1], "Control+Alt+Left: orlo snap left-half");
    EXPECT_EQ(lines[2], "Alt+Tab: orlo switcher");
    EXPECT_EQ(lines[3], "");
}

TEST(TakenKeysBox, OnSwayTheLinesAreBindsymsInSwaysKeyNamesThatRunOrlosCommands)
{
    fakes::FakeKeyboardLayout layout;
    layout.characters.insert(43, ",");
    wayland::SwayConfigKeys service(layout);
    HotKeys hotKeys(service);
    const Shortcut left{KeyCode::LeftArrow, Control | Option};
    const QList<HotKeys::Taken> taken{{"windows", "Left half", left, "orlo snap left-half"},
                                      {"windows", "Left third", left, "orlo snap left-third"},
                                      {"clipboard", "Clipboard history", {KeyCode::V, Command | Shift}, "orlo clipboard"},
                                      {"switcher", "Window Switcher", {KeyCode::Tab, Option}, "orlo switcher"},
                                      {"windows", "Restore", {KeyCode::Delete, Control | Option}, "orlo snap restore"},
                                      {"windows", "Comma", {43, Command}, "orlo snap center"},
                                      {"windows", "Unnamed", {105, Command}, "orlo snap maximize"}};
    EXPECT_FALSE(hotKeys.registerHotKey(left, [] {}));
    const QStringList lines = TakenKeysBox::commandsText(taken, hotKeys, layout).split('\n');
    EXPECT_TRUE(lines[0].startsWith("# ") && lines[0].contains("~/.config/sway/config")) << qPrintable(lines[0]);
    EXPECT_EQ(lines.mid(1), (QStringList{"bindsym Ctrl+Mod1+Left exec orlo snap left-half",
                                         "bindsym Shift+Mod4+v exec orlo clipboard", "bindsym Mod1+Tab exec orlo switcher",
                                         "bindsym Ctrl+Mod1+BackSpace exec orlo snap restore",
                                         "bindsym Mod4+comma exec orlo snap center", ""}));

    // The settings page shows the lines themselves, beside the button that copies them.
    hotKeys.reportTaken("windows", taken);
    TakenKeysBox box(hotKeys, "windows", layout);
    const auto* shown = box.findChild<QLabel*>("bindingLines");
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->text().startsWith("bindsym Ctrl+Mod1+Left exec orlo snap left-half\n")) << qPrintable(shown->text());
    EXPECT_FALSE(box.findChild<QWidget*>("useFreeKeys")->isVisibleTo(&box));
}
