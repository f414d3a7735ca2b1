#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "platform/linux/JsonSettingsStorage.h"
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orlo;

TEST(Defaults, TypedReadsOnlyAnswerForTheirOwnType)
{
    fakes::FakeSettingsStorage storage;
    storage.stored = {{"a.enabled", "false"}, {"b.enabled", false}, {"gap", 12}, {"ratio", 2.5},
                      {"name", "x"}, {"blob", QByteArray("\x01\x02")}, {"list", QVariantList{"a", "b"}},
                      {"mixed", QVariantList{"a", 1}}};
    Defaults d(storage);
    EXPECT_FALSE(d.boolValue("a.enabled").has_value());  // a string is not a Boolean
    EXPECT_EQ(d.boolValue("b.enabled"), false);
    EXPECT_FALSE(d.boolValue("gap").has_value());
    EXPECT_EQ(d.integerValue("gap"), 12);
    EXPECT_EQ(d.integerValue("ratio"), 2);
    EXPECT_EQ(d.doubleValue("gap"), 12.0);
    EXPECT_FALSE(d.integerValue("name").has_value());
    EXPECT_EQ(d.stringValue("name"), QString("x"));
    EXPECT_EQ(d.dataValue("blob"), QByteArray("\x01\x02"));
    EXPECT_FALSE(d.stringValue("blob").has_value());
    EXPECT_EQ(d.stringListValue("list"), QStringList({"a", "b"}));
    EXPECT_FALSE(d.stringListValue("mixed").has_value());
    EXPECT_FALSE(d.boolValue("missing").has_value());
}

TEST(Defaults, IntegerOfADoubleBeyondTheIntegersIsNothing)
{
    fakes::FakeSettingsStorage storage;
    storage.stored = {{"huge", 1e300}, {"low", -1e19}, {"edge", 0x1p63}, {"nan", qQNaN()},
                      {"largest", 0x1p62}, {"lowest", -0x1p63}};
    Defaults d(storage);
    for (const char* key : {"huge", "low", "edge", "nan"}) {
        EXPECT_FALSE(d.integerValue(key).has_value()) << key;
        EXPECT_TRUE(d.doubleValue(key).has_value()) << key;
    }
    EXPECT_EQ(d.integerValue("largest"), qint64(1) << 62);
    EXPECT_EQ(d.integerValue("lowest"), std::numeric_limits<qint64>::min());
}

TEST(Defaults, SignalsRealChangesAndSavesThemCoalesced)
{
    fakes::FakeSettingsStorage storage;
    Defaults d(storage);
    QSignalSpy spy(&d, &Defaults::changed);
    d.set("x", true);
    d.set("x", true);
    d.set("x", 1);  // same value, other type: a change
    d.remove("x");
    d.remove("x");
    EXPECT_EQ(spy.count(), 3);
    EXPECT_EQ(storage.saves, 0);
    QTest::qWait(20);
    EXPECT_EQ(storage.saves, 1);
    d.set("y", QString("v"));
    d.flush();
    EXPECT_EQ(storage.saves, 2);
    EXPECT_EQ(storage.stored.value("y"), QVariant(QString("v")));
}

TEST(JsonSettingsStorage, KeepsEveryTypeAcrossSaveAndLoad)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("Orlo/settings.json");
    QVariantMap values{{"b", true}, {"i", qint64(7)}, {"d", 0.25}, {"s", "text"},
                       {"data", QByteArray("\x00\xff{}", 4)}, {"list", QVariantList{"x", false}},
                       {"dict", QVariantMap{{"k", 1}}}};
    ASSERT_TRUE(JsonSettingsStorage(path).save(values));
    EXPECT_EQ(QFile::permissions(path) & 0x0077, 0);  // private to the user
    const auto loaded = JsonSettingsStorage(path).load();
    EXPECT_TRUE(loaded.problem.isEmpty());
    fakes::FakeSettingsStorage fake;
    fake.stored = loaded.values;
    Defaults d(fake);
    EXPECT_EQ(d.boolValue("b"), true);
    EXPECT_EQ(loaded.values.value("i").typeId(), QMetaType::LongLong);
    EXPECT_EQ(d.doubleValue("d"), 0.25);
    EXPECT_EQ(d.stringValue("s"), QString("text"));
    EXPECT_EQ(d.dataValue("data"), QByteArray("\x00\xff{}", 4));
    EXPECT_EQ(loaded.values.value("list").toList().value(1).typeId(), QMetaType::Bool);
    EXPECT_EQ(d.dictionaryValue("dict")->value("k").toInt(), 1);
}

TEST(JsonSettingsStorage, UnreadableFileIsKeptAsideAndNeverOverwritten)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("settings.json");
    for (const QByteArray& bad : {QByteArray("{\"a\": tru"), QByteArray("[1, 2]")}) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bad);
        f.close();
        JsonSettingsStorage storage(path);
        const auto loaded = storage.load();
        EXPECT_TRUE(loaded.values.isEmpty());
        EXPECT_TRUE(loaded.problem.contains("could not be read")) << qPrintable(loaded.problem);
        const QStringList aside = QDir(dir.path()).entryList({"settings.json.unreadable-*"});
        ASSERT_EQ(aside.size(), 1);
        QFile kept(dir.filePath(aside.first()));
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
        EXPECT_EQ(kept.readAll(), bad);
        kept.remove();
        // Saving afterwards writes a fresh file in the original place.
        EXPECT_TRUE(storage.save({{"x", 1}}));
        EXPECT_TRUE(QFile::exists(path));
    }
}
