// The settings file: whatever it holds, Orlo starts and each value reads through every typed
// read of the defaults store; the values that loaded save and load again unchanged.
#include "FuzzInput.h"
#include "kit/Defaults.h"
#include "platform/linux/JsonSettingsStorage.h"

using orlo::fuzz::require;

static void readEveryWay(const orlo::Defaults& defaults, const QString& key)
{
    (void)defaults.object(key);
    (void)defaults.boolValue(key);
    (void)defaults.integerValue(key);
    (void)defaults.doubleValue(key);
    (void)defaults.stringValue(key);
    (void)defaults.dataValue(key);
    (void)defaults.stringListValue(key);
    (void)defaults.dictionaryValue(key);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = orlo::fuzz::fileHolding(orlo::fuzz::bytes(data, size), "settings.json");
    const QVariantMap values = orlo::JsonSettingsStorage(path).load().values;
    orlo::fuzz::clearFolderOf(path);

    orlo::fuzz::StoredSettings storage(values);
    orlo::Defaults defaults(storage);
    for (auto it = values.cbegin(); it != values.cend(); ++it) readEveryWay(defaults, it.key());

    orlo::JsonSettingsStorage(path).save(values);
    const auto again = orlo::JsonSettingsStorage(path).load();
    orlo::fuzz::clearFolderOf(path);
    require(again.problem.isEmpty(), "what Orlo saves loads");
    require(again.values == values, "what Orlo saves loads as the same values");
    return 0;
}
