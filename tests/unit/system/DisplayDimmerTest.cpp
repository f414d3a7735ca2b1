#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "system/DimmingSlider.h"
#include "system/DisplayDimmer.h"
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

struct Dimmer : ::testing::Test {
    fakes::FakePlatform platform;
    fakes::FakeGamma& gamma = *platform.fakeGamma;
    Defaults defaults{*platform.settings};
    std::unique_ptr<DisplayDimmer> dimmer = std::make_unique<DisplayDimmer>(gamma, defaults);
    GammaDisplay builtIn = gamma.list.first();
    GammaDisplay external{2, "Studio", "7789-1-42", false};

    // A night light's warm tint over the ramp.
    static GammaTables tint()
    {
        GammaTables t = fakes::FakeGamma::ramp();
        for (float& v : t.blue) v *= 0.6f;
        return t;
    }
    GammaTables scaled(double level, GammaTables t = fakes::FakeGamma::ramp())
    {
        for (auto* table : {&t.red, &t.green, &t.blue})
            for (float& v : *table) v = float(v * level);
        return t;
    }
};

}  // namespace

TEST_F(Dimmer, LevelsAreClampedStoredAndAppliedOnlyWhileActive)
{
    dimmer->setLevel(0.05, builtIn);
    EXPECT_EQ(dimmer->level(builtIn), 0.15);
    dimmer->setLevel(1.5, builtIn);
    EXPECT_EQ(dimmer->level(builtIn), 1.0);
    dimmer->setLevel(0.5, builtIn);
    EXPECT_EQ(defaults.dictionaryValue("system.dimLevels")->value(builtIn.key).toDouble(), 0.5);
    EXPECT_EQ(gamma.sets, 0);  // not active yet

    dimmer->start();
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.5));
    dimmer->setLevel(0.25, builtIn);
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.25));  // from the originals, not compounded
    dimmer->setLevel(1.0, builtIn);
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());

    // A new dimmer (the next start of Orlo) finds the stored levels.
    dimmer->setLevel(0.4, builtIn);
    dimmer = std::make_unique<DisplayDimmer>(gamma, defaults);
    EXPECT_DOUBLE_EQ(dimmer->level(builtIn), 0.4);
}

TEST_F(Dimmer, DisplaysWithoutLevelsOrTablesAreLeftAlone)
{
    gamma.list << external;
    gamma.capacities.insert(builtIn.id, 0);
    dimmer->refreshDisplays();
    dimmer->setLevel(0.3, builtIn);
    dimmer->start();
    EXPECT_EQ(gamma.sets, 0);
    EXPECT_EQ(dimmer->main()->id, builtIn.id);
}

TEST_F(Dimmer, StopResetAndExitGiveTheDisplaysTheirTablesBack)
{
    dimmer->setLevel(0.5, builtIn);
    dimmer->start();
    dimmer->stop();
    EXPECT_FALSE(dimmer->isActive());
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());
    dimmer->setLevel(0.6, builtIn);
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());  // levels kept, not applied

    dimmer->start();
    EXPECT_TRUE(dimmer->holdsSavedTables());
    dimmer->resetAll();
    EXPECT_FALSE(defaults.object("system.dimLevels").isValid());
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());
    dimmer->stop();
    dimmer->start();
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());

    dimmer->setLevel(0.5, builtIn);
    dimmer->restoreForExit();
    EXPECT_FALSE(dimmer->holdsSavedTables());
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());
}

TEST_F(Dimmer, ReconnectedDisplaysGetTheirLevelAgain)
{
    dimmer->setLevel(0.5, external);
    dimmer->start();
    EXPECT_FALSE(gamma.current.contains(external.id));
    gamma.list << external;
    gamma.reconnect();
    EXPECT_EQ(dimmer->displays().size(), 2);
    EXPECT_EQ(gamma.current.value(external.id), scaled(0.5));
    dimmer->stop();
    gamma.reconnect();  // no longer observed
    EXPECT_EQ(gamma.current.value(external.id), fakes::FakeGamma::ramp());
}

TEST_F(Dimmer, StoredLevelsOfTheWrongTypeAreIgnored)
{
    defaults.set("system.dimLevels", QVariantMap{{"a", "dark"}, {"b", 0.01}});
    DisplayDimmer fresh(gamma, defaults);
    EXPECT_EQ(fresh.level(GammaDisplay{9, "A", "a", false}), 1.0);
    EXPECT_EQ(fresh.level(GammaDisplay{9, "B", "b", false}), 0.15);
}

TEST_F(Dimmer, TablesAnotherProgramWroteBecomeTheOriginalsAndAreNeverWrittenOver)
{
    dimmer->setLevel(0.5, builtIn);
    dimmer->start();
    // A night light tints the display while Orlo dims it; the next reapply dims the tint.
    gamma.current.insert(builtIn.id, tint());
    gamma.reconnect();
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.5, tint()));
    EXPECT_EQ(gamma.kept.value(builtIn.key), tint());
    dimmer->setLevel(0.3, builtIn);
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.3, tint()));
    dimmer->stop();
    EXPECT_EQ(gamma.current.value(builtIn.id), tint());
    EXPECT_TRUE(gamma.kept.isEmpty());

    // The night light changes the tables again while dimmed: stopping leaves its tables alone.
    dimmer->start();
    gamma.current.insert(builtIn.id, fakes::FakeGamma::ramp());
    const int writes = gamma.sets;
    dimmer->restoreForExit();
    EXPECT_EQ(gamma.sets, writes);
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());
    EXPECT_TRUE(gamma.kept.isEmpty());
    EXPECT_FALSE(dimmer->holdsSavedTables());
}

TEST_F(Dimmer, AReapplyGoesStraightToTheNewTablesWithoutAFlash)
{
    dimmer->setLevel(0.5, builtIn);
    dimmer->start();
    gamma.writes.clear();
    gamma.reconnect();
    for (const auto& write : std::as_const(gamma.writes)) EXPECT_NE(write.second, fakes::FakeGamma::ramp());
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.5));
}

TEST_F(Dimmer, DisplaysAreKnownByKeySoAMovedDisplayNeverGetsAnothersTables)
{
    gamma.list << external;
    gamma.current.insert(builtIn.id, tint());
    dimmer->setLevel(0.5, builtIn);
    dimmer->start();
    // After a hotplug the built-in display shows on the other CRTC, the external one on its.
    gamma.list = {{external.id, "Built-in", builtIn.key, true}, {builtIn.id, "Studio", external.key, false}};
    gamma.current.insert(builtIn.id, fakes::FakeGamma::ramp());
    gamma.current.insert(external.id, tint());
    gamma.reconnect();
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());  // the external one, untouched
    EXPECT_EQ(gamma.current.value(external.id), scaled(0.5, tint()));
    dimmer->stop();
    EXPECT_EQ(gamma.current.value(builtIn.id), fakes::FakeGamma::ramp());
    EXPECT_EQ(gamma.current.value(external.id), tint());
}

TEST_F(Dimmer, TheDisplayListFollowsHotplugWhileTheDimmerIsOff)
{
    QSignalSpy changed(dimmer.get(), &DisplayDimmer::displaysChanged);
    gamma.list << external;
    gamma.reconnect();
    EXPECT_EQ(dimmer->displays().size(), 2);
    EXPECT_EQ(changed.size(), 1);
    EXPECT_EQ(gamma.sets, 0);
}

TEST_F(Dimmer, DraggingTheSliderSetsTheLevelAtMostOnceAFrame)
{
    dimmer->start();
    DimmingSlider slider(*dimmer, builtIn);
    for (int value = 99; value >= 40; --value) slider.slider()->setValue(value);
    EXPECT_EQ(gamma.sets, 1);  // the first move at once, the rest waits for the next frame
    EXPECT_EQ(gamma.current.value(builtIn.id), scaled(0.99));
    ASSERT_TRUE(QTest::qWaitFor([&] { return gamma.current.value(builtIn.id) == scaled(0.4); }));
    EXPECT_EQ(gamma.sets, 2);
    EXPECT_EQ(slider.slider()->value(), 40);
}
