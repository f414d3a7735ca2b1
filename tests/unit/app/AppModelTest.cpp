#include "FakePlatform.h"
#include "app/AppModel.h"
#include "kit/Defaults.h"
#include "kit/Permissions.h"
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace orlo;

namespace {

// A module that records its lifecycle calls into a shared journal.
class RecordingModule : public OrloModule {
public:
    RecordingModule(Defaults& d, QString id, bool needsAx, QStringList& journal)
        : OrloModule(d), id_(std::move(id)), needsAx_(needsAx), journal_(journal) {}
    QString id() const override { return id_; }
    QString title() const override { return id_; }
    QString symbol() const override { return {}; }
    QString summary() const override { return {}; }
    bool needsAccessibility() const override { return needsAx_; }
    void start() override { journal_ << "start " + id_; }
    void stop() override { journal_ << "stop " + id_; }
    QWidget* settingsView() override { return nullptr; }

private:
    QString id_;
    bool needsAx_;
    QStringList& journal_;
};

struct ModelFixture : ::testing::Test {
    fakes::FakePlatform platform;
    Defaults defaults{*platform.settings};
    std::unique_ptr<Permissions> permissions;
    std::unique_ptr<AppModel> model;
    QStringList journal;

    void build(bool trusted)
    {
        platform.fakeAccessibility->trusted = trusted;
        permissions = std::make_unique<Permissions>(*platform.accessibility);
        std::vector<std::unique_ptr<OrloModule>> modules;
        for (auto [id, ax] : {std::pair{"system", false}, {"windows", true}, {"switcher", true}, {"clipboard", false}})
            modules.push_back(std::make_unique<RecordingModule>(defaults, id, ax, journal));
        model = std::make_unique<AppModel>(*permissions, *platform.loginItem, std::move(modules));
    }
};

}  // namespace

TEST_F(ModelFixture, FirstPassRunsOnTheNextTurnAndStartsWhatMayRun)
{
    build(false);
    EXPECT_TRUE(journal.isEmpty());
    QCoreApplication::processEvents();
    EXPECT_EQ(journal, (QStringList{"start system", "start clipboard"}));
    EXPECT_EQ(model->running(), (QSet<QString>{"system", "clipboard"}));
    model->apply();
    EXPECT_EQ(journal.size(), 2);  // a second pass changes nothing
}

TEST_F(ModelFixture, PermissionGrantAndRevocationStartAndStopInOrder)
{
    build(false);
    model->apply();
    journal.clear();
    platform.fakeAccessibility->trusted = true;
    permissions->refresh();
    model->apply();
    EXPECT_EQ(journal, (QStringList{"start windows", "start switcher"}));
    journal.clear();
    platform.fakeAccessibility->trusted = false;
    permissions->refresh();
    model->apply();
    EXPECT_EQ(journal, (QStringList{"stop windows", "stop switcher"}));
}

TEST_F(ModelFixture, SwitchStoresTheWishBumpsRevisionAndAppliesAtOnce)
{
    build(false);
    model->apply();
    journal.clear();
    QSignalSpy revisions(model.get(), &AppModel::revisionChanged);
    model->setModuleEnabled(*model->module("clipboard"), false);
    EXPECT_EQ(journal, QStringList{"stop clipboard"});
    EXPECT_EQ(defaults.boolValue("clipboard.enabled"), false);
    EXPECT_EQ(model->revision(), 1);
    EXPECT_EQ(revisions.count(), 1);

    // Turning on a module that lacks its permission records the wish only.
    model->setModuleEnabled(*model->module("windows"), true);
    EXPECT_EQ(journal, QStringList{"stop clipboard"});
    EXPECT_TRUE(model->module("windows")->isEnabled());
    EXPECT_FALSE(model->running().contains("windows"));
}

TEST_F(ModelFixture, EnabledKeyThatIsNotABooleanCountsAsEnabled)
{
    defaults.set("system.enabled", QString("false"));
    defaults.set("clipboard.enabled", 0);
    build(true);
    model->apply();
    EXPECT_EQ(model->running().size(), 4);
}

TEST_F(ModelFixture, LaunchAtLoginShowsTheSystemsRealState)
{
    build(true);
    platform.fakeLoginItem->failRegistration = true;
    model->setLaunchAtLogin(true);
    EXPECT_FALSE(model->launchAtLogin());
    EXPECT_EQ(model->revision(), 1);
    platform.fakeLoginItem->failRegistration = false;
    model->setLaunchAtLogin(true);
    EXPECT_TRUE(model->launchAtLogin());
    model->setLaunchAtLogin(false);
    EXPECT_FALSE(model->launchAtLogin());
}

TEST(Permissions, NotifiesOnlyOnChangeAndPromptsThenOpensSettings)
{
    fakes::FakeAccessibility system;
    system.trusted = true;
    Permissions permissions(system);
    QSignalSpy spy(&permissions, &Permissions::accessibilityChanged);
    permissions.refresh();
    EXPECT_EQ(spy.count(), 0);
    permissions.requestAccessibility();
    EXPECT_EQ(system.settingsOpened, 0);  // already trusted: nothing opens
    system.trusted = false;
    permissions.refresh();
    permissions.refresh();
    EXPECT_EQ(spy.count(), 1);
    EXPECT_FALSE(permissions.accessibility());
    permissions.requestAccessibility();
    EXPECT_EQ(system.prompts, 2);
    EXPECT_EQ(system.settingsOpened, 1);
    EXPECT_FALSE(permissions.accessibility());  // a grant arrives only through the poll
}
