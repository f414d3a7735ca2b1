#include "windows/SnapAction.h"
#include <QSet>
#include <gtest/gtest.h>

using namespace orlo;

TEST(SnapAction, CommandNamesAreTheKeysInHyphenatedLowerCaseAndReadBack)
{
    QStringList names;
    for (SnapAction action : SnapAction::all()) names << action.commandName();
    EXPECT_EQ(names, (QStringList{"maximize", "almost-maximize", "center", "left-half", "right-half", "top-half",
                                  "bottom-half", "left-third", "center-third", "right-third", "left-two-thirds",
                                  "right-two-thirds", "top-left", "top-right", "bottom-left", "bottom-right",
                                  "next-display", "previous-display", "restore", "auto-layout"}));
    for (SnapAction action : SnapAction::all()) EXPECT_EQ(SnapAction::fromCommandName(action.commandName()), action);
    for (const char* wrong : {"leftHalf", "Left-Half", "left_half", "left-half ", "", "snap"})
        EXPECT_FALSE(SnapAction::fromCommandName(wrong)) << wrong;
}

TEST(SnapKeySet, EachSetBindsEveryActionToItsOwnKeyOnTheDefaultsKeys)
{
    ASSERT_FALSE(SnapKeySet::alternatives().isEmpty());
    for (const SnapKeySet& set : SnapKeySet::alternatives()) {
        QSet<QPair<quint32, quint64>> keys;
        for (SnapAction action : SnapAction::all()) {
            const Shortcut s = set.shortcut(action);
            EXPECT_EQ(s.keyCode, action.defaultShortcut().keyCode) << qPrintable(action.key());
            keys.insert({s.keyCode, s.modifiers});
        }
        EXPECT_EQ(keys.size(), SnapAction::count);
        EXPECT_EQ(set.shortcut(SnapArea::leftHalf).modifiers, set.modifiers);
    }
}
