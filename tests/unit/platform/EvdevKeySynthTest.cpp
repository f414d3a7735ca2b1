// The key sequence that Orlo types on Wayland (virtual keyboard and KWin's fake input alike).
#include "platform/wayland/EvdevKeySynth.h"
#include <QList>
#include <QString>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

using orlo::wayland::EvdevKeySynth;

namespace {

// Records the keys as a compositor would receive them; a key can be made to fail.
class RecordingKeys : public EvdevKeySynth {
public:
    QStringList sent;
    QStringList queued;
    bool isReady = true;
    quint32 failing = 0;

protected:
    bool ready() const override { return isReady; }
    bool key(quint32 code, bool pressed) override
    {
        if (code == failing) return false;
        queued << QStringLiteral("%1 %2").arg(code).arg(pressed ? "down" : "up");
        return true;
    }
    void modifiersHeld(Held held) override { queued << QStringLiteral("held %1").arg(int(held)); }
    bool send() override
    {
        sent << queued;
        queued.clear();
        return true;
    }
};

QString keyDown(quint32 code) { return QStringLiteral("%1 down").arg(code); }
QString keyUp(quint32 code) { return QStringLiteral("%1 up").arg(code); }

TEST(EvdevKeySynth, PastesControlVAndLetsEveryKeyGoEvenWhenAPressFails)
{
    RecordingKeys keys;
    EXPECT_TRUE(keys.postPaste());
    EXPECT_EQ(keys.sent, (QStringList{"held 0", keyDown(KEY_LEFTCTRL), "held 1", keyDown(KEY_V), keyUp(KEY_V),
                                      keyUp(KEY_LEFTCTRL), "held 0"}));

    // V could not be pressed: Control, already down, still comes up, and is sent.
    keys.sent.clear();
    keys.failing = KEY_V;
    EXPECT_FALSE(keys.postPaste());
    EXPECT_EQ(keys.sent, (QStringList{"held 0", keyDown(KEY_LEFTCTRL), "held 1", keyUp(KEY_LEFTCTRL), "held 0"}));

    // Control could not be pressed: V is not typed alone, which would type a letter.
    keys.sent.clear();
    keys.failing = KEY_LEFTCTRL;
    EXPECT_FALSE(keys.postPaste());
    EXPECT_EQ(keys.sent, QStringList{"held 0"});

    keys.sent.clear();
    keys.isReady = false;
    EXPECT_FALSE(keys.tap(KEY_TAB));
    EXPECT_TRUE(keys.sent.isEmpty());
}

}  // namespace
