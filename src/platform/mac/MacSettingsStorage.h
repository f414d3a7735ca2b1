#pragma once
#include "platform/SettingsStorage.h"

namespace orlo::mac {

// Orlo's settings as the persistent defaults domain of its bundle identifier, the user
// defaults macOS keeps for every application (`defaults read app.orlo.Orlo` shows them).
// The values keep their types: Booleans, integers, reals, strings, data, lists and dictionaries.
class MacSettingsStorage : public SettingsStorage {
public:
    explicit MacSettingsStorage(QString domain);
    Loaded load() override;
    bool save(const QVariantMap& values) override;

private:
    QString domain_;
};

}  // namespace orlo::mac
