// orlo-test-keys KEY...: presses keys by their place on a US keyboard, on a virtual keyboard
// of the Wayland seat (wlroots) or through KWin's fake input, as a real keyboard would (Orlo's
// picker reads keys by position, which wtype's own key numbering does not keep). KEY: a
// letter or digit, Down, Up, Return, Escape, Tab, each with "Alt+" before it to hold Alt.
// orlo-test-keys --hold-alt: holds Alt down and types Tab with it, then lets go of Alt once
// its standard input closes: the switcher's own release.
#include "platform/wayland/FakeInputSynth.h"
#include "platform/wayland/VirtualKeyboardSynth.h"
#include "platform/wayland/WaylandConnection.h"
#include <QCoreApplication>
#include <QHash>
#include <cstdio>
#include <linux/input-event-codes.h>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QHash<QString, quint32> named{{"Down", KEY_DOWN}, {"Up", KEY_UP}, {"Return", KEY_ENTER}, {"Escape", KEY_ESC}, {"Tab", KEY_TAB},
                                        {"1", KEY_1}, {"2", KEY_2}, {"3", KEY_3}, {"4", KEY_4}, {"5", KEY_5},
                                        {"a", KEY_A}, {"e", KEY_E}, {"o", KEY_O}, {"l", KEY_L}, {"d", KEY_D}, {"r", KEY_R}};
    QString error;
    auto connection = orlo::wayland::WaylandConnection::open(&error);
    std::unique_ptr<orlo::wayland::EvdevKeySynth> synth;
    if (connection) synth = orlo::wayland::VirtualKeyboardSynth::create(*connection);
    if (connection && !synth) synth = orlo::wayland::FakeInputSynth::create(*connection);
    if (!synth) {
        fprintf(stderr, "orlo-test-keys: neither a virtual keyboard nor fake input: %s\n", qPrintable(error));
        return 1;
    }
    if (argc == 2 && QByteArray(argv[1]) == "--hold-alt") {
        using Held = orlo::wayland::EvdevKeySynth::Held;
        if (!synth->setKey(KEY_LEFTALT, true, Held::Nothing, Held::Alt) || !synth->setKey(KEY_TAB, true, Held::Alt, Held::Alt) ||
            !synth->setKey(KEY_TAB, false, Held::Alt, Held::Alt) || !connection->roundtrip())
            return 1;
        while (getchar() != EOF) {}
        return synth->setKey(KEY_LEFTALT, false, Held::Alt, Held::Nothing) && connection->roundtrip() ? 0 : 1;
    }
    for (int i = 1; i < argc; ++i) {
        QString name = QString::fromLocal8Bit(argv[i]);
        const bool alt = name.startsWith(QLatin1String("Alt+"));
        if (alt) name.remove(0, 4);
        using Held = orlo::wayland::EvdevKeySynth::Held;
        const auto key = named.constFind(name);
        if (key == named.constEnd() || !synth->tap(*key, alt ? Held::Alt : Held::Nothing)) return 2;
    }
    return connection->roundtrip() ? 0 : 1;
}
