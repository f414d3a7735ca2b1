#pragma once
#include "platform/SettingsStorage.h"

namespace orlo {

// The defaults store as a JSON file that keeps every value's type: Booleans, numbers,
// strings, lists, dictionaries, and data as {"$data": "<Base64>"}. A file that cannot be
// read is moved aside, never overwritten.
class JsonSettingsStorage : public SettingsStorage {
public:
    explicit JsonSettingsStorage(QString path);
    static QString defaultPath();
    Loaded load() override;
    bool save(const QVariantMap& values) override;

private:
    QString path_;
};

}  // namespace orlo
