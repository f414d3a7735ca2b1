#include "app/OrloCommands.h"
#include <gtest/gtest.h>

using namespace orlo;

TEST(OrloCommands, WordsAreCheckedBeforeTheyAreSent)
{
    for (const QStringList& good : {QStringList{"switcher"}, {"settings"}, {"settings", "clipboard"}, {"snap", "left-two-thirds"},
                                    {"snap", "next-display"}, {"toggle-prevent-sleep"}, {"quit"}})
        EXPECT_EQ(OrloCommands::check(good), QString()) << qPrintable(good.join(' '));
    EXPECT_EQ(OrloCommands::check({"snap"}), "\"snap\" needs an ACTION.");
    EXPECT_EQ(OrloCommands::check({"snap", "leftHalf"}), "Unknown ACTION \"leftHalf\" for \"snap\".");
    EXPECT_EQ(OrloCommands::check({"settings", "appearance"}), "Unknown PAGE \"appearance\" for \"settings\".");
    EXPECT_EQ(OrloCommands::check({"settings", "windows", "now"}), "\"settings\" takes one PAGE.");
    EXPECT_EQ(OrloCommands::check({"quit", "now"}), "\"quit\" takes no argument.");
    EXPECT_EQ(OrloCommands::check({"Quit"}), "Unknown action \"Quit\".");
    EXPECT_FALSE(OrloCommands::check({}).isEmpty());
}

TEST(OrloCommands, UsageNamesEveryActionAndEveryWordItTakes)
{
    const QString usage = OrloCommands::usage();
    for (const auto& command : OrloCommands::all()) EXPECT_TRUE(usage.contains("  " + command.name)) << qPrintable(command.name);
    for (const QString& word : OrloCommands::snapActions() + OrloCommands::settingsPages())
        EXPECT_TRUE(usage.contains(word)) << qPrintable(word);
    EXPECT_TRUE(usage.contains("settings [PAGE]"));
}
