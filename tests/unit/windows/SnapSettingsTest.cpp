#include "TestKeys.h"
#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "windows/SnapSettings.h"
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct SnapSettingsFixture : ::testing::Test {
    fakes::FakeSettingsStorage storage;

    // The settings as a new run of Orlo reads them from what the last one saved.
    std::unique_ptr<SnapSettings> reopen()
    {
        defaults.reset();
        defaults = std::make_unique<Defaults>(storage);
        return std::make_unique<SnapSettings>(*defaults);
    }
    std::unique_ptr<Defaults> defaults;
};
}  // namespace

TEST_F(SnapSettingsFixture, FreshSettingsHoldTheDefaults)
{
    auto settings = reopen();
    EXPECT_EQ(settings->shortcuts().size(), SnapAction::count);
    EXPECT_EQ(settings->shortcut(SnapArea::leftHalf), (Shortcut{KeyCode::LeftArrow, ControlOption}));
    EXPECT_EQ(settings->shortcut(SnapArea::almostMaximize), (Shortcut{KeyCode::Return, ControlOption | ModifierFlag::Shift}));
    EXPECT_EQ(settings->shortcut(SnapAction::nextDisplay), (Shortcut{KeyCode::RightArrow, ControlOption | ModifierFlag::Command}));
    EXPECT_EQ(settings->shortcut(SnapAction::restore), (Shortcut{KeyCode::Delete, ControlOption}));
    EXPECT_EQ(settings->gap(), 0);
    EXPECT_TRUE(settings->dragToSnap());
    EXPECT_FALSE(settings->autoLayoutAllApps());
    EXPECT_EQ(settings->rule(SnapScreenKind::laptop), SnapAreaSet::halvesAndThirds);
    EXPECT_EQ(settings->rule(SnapScreenKind::ultrawide), SnapAreaSet::thirdsFirst);
}

TEST_F(SnapSettingsFixture, EveryChangeSurvivesARestartIncludingAClearedShortcut)
{
    auto settings = reopen();
    const Shortcut shared{KeyCode::LeftArrow, ControlOption};
    settings->setShortcut(std::nullopt, SnapArea::maximize);
    settings->setShortcut(shared, SnapArea::leftThird);
    settings->setGap(12);
    settings->setDragToSnap(false);
    settings->setAutoLayoutAllApps(true);
    settings->setRule(SnapScreenKind::laptop, SnapAreaSet::halves);
    defaults->flush();

    settings = reopen();
    EXPECT_EQ(settings->shortcut(SnapArea::maximize), std::nullopt);
    EXPECT_EQ(settings->shortcut(SnapArea::leftThird), shared);
    EXPECT_EQ(settings->shortcut(SnapArea::leftHalf), shared);
    EXPECT_EQ(settings->gap(), 12);
    EXPECT_FALSE(settings->dragToSnap());
    EXPECT_TRUE(settings->autoLayoutAllApps());
    EXPECT_EQ(settings->rule(SnapScreenKind::laptop), SnapAreaSet::halves);

    settings->setRule(SnapScreenKind::laptop, std::nullopt);
    settings->restoreDefaultShortcuts();
    defaults->flush();
    settings = reopen();
    EXPECT_EQ(settings->rule(SnapScreenKind::laptop), SnapAreaSet::halvesAndThirds);
    EXPECT_EQ(settings->shortcuts(), SnapSettings::defaultShortcuts());
}

TEST_F(SnapSettingsFixture, StoredShortcutsReplaceOnlyTheActionsTheyName)
{
    QJsonObject stored{{"leftHalf", QJsonObject{{"shortcut", QJsonObject{{"keyCode", 2}, {"modifiers", 0x40000}}}}},
                       {"restore", QJsonObject{}},
                       {"noSuchAction", QJsonObject{}}};
    storage.stored.insert("windows.shortcuts", QJsonDocument(stored).toJson());
    auto settings = reopen();
    EXPECT_EQ(settings->shortcut(SnapArea::leftHalf), (Shortcut{2, 0x40000}));
    EXPECT_EQ(settings->shortcut(SnapAction::restore), std::nullopt);
    EXPECT_EQ(settings->shortcut(SnapArea::rightHalf), SnapAction(SnapArea::rightHalf).defaultShortcut());
}

TEST_F(SnapSettingsFixture, UnreadableValuesFallBackToTheDefaults)
{
    storage.stored.insert("windows.shortcuts", QByteArray("{\"leftHalf\": {\"shortcut\": {\"keyCode\": \"x\"}}}"));
    storage.stored.insert("windows.gap", QString("wide"));
    storage.stored.insert("windows.dragToSnap", QString("false"));
    storage.stored.insert("windows.rules", QVariantMap{{"laptop", "thirdsFirst"}, {"standard", "sometimes"}, {"tv", "halves"}});
    auto settings = reopen();
    EXPECT_EQ(settings->shortcuts(), SnapSettings::defaultShortcuts());
    EXPECT_EQ(settings->gap(), 0);
    EXPECT_TRUE(settings->dragToSnap());
    EXPECT_EQ(settings->rule(SnapScreenKind::laptop), SnapAreaSet::thirdsFirst);
    EXPECT_EQ(settings->rule(SnapScreenKind::standard), SnapAreaSet::halvesAndThirds);
}

TEST_F(SnapSettingsFixture, RecordingTakesAShortcutClearsOnDeleteAndCancelsOnEscape)
{
    auto settings = reopen();
    QSignalSpy recording(settings.get(), &SnapSettings::recordingChanged);
    QSignalSpy changed(settings.get(), &SnapSettings::shortcutsChanged);

    settings->startRecording(SnapArea::center);
    EXPECT_FALSE(settings->recordKey(9, ModifierFlag::Shift));  // Shift alone cannot make a shortcut
    EXPECT_EQ(settings->recording(), SnapAction(SnapArea::center));
    EXPECT_TRUE(settings->recordKey(9, ControlOption | ModifierFlag::CapsLock));
    EXPECT_EQ(settings->shortcut(SnapArea::center), (Shortcut{9, ControlOption}));
    EXPECT_EQ(settings->recording(), std::nullopt);

    settings->startRecording(SnapArea::center);
    settings->recordKey(KeyCode::Escape, ControlOption);
    EXPECT_EQ(settings->shortcut(SnapArea::center), (Shortcut{9, ControlOption}));

    settings->startRecording(SnapArea::center);
    settings->recordKey(KeyCode::Delete, 0);
    EXPECT_EQ(settings->shortcut(SnapArea::center), std::nullopt);

    // Delete with modifiers is a shortcut like any other.
    settings->startRecording(SnapAction::restore);
    settings->recordKey(KeyCode::Delete, ControlOption | ModifierFlag::Shift);
    EXPECT_EQ(settings->shortcut(SnapAction::restore), (Shortcut{KeyCode::Delete, ControlOption | ModifierFlag::Shift}));

    // Starting on another row ends the recording in progress first.
    settings->startRecording(SnapArea::topHalf);
    settings->startRecording(SnapArea::bottomHalf);
    EXPECT_EQ(settings->recording(), SnapAction(SnapArea::bottomHalf));
    EXPECT_EQ(changed.count(), 3);
    EXPECT_EQ(recording.count(), 11);
}
