#pragma once
#include <QString>
#include <QVariantMap>

namespace orlo {

// Where the defaults store keeps its values between runs.
class SettingsStorage {
public:
    struct Loaded {
        QVariantMap values;
        QString problem;  // non-empty when stored values existed but could not be read
    };
    virtual ~SettingsStorage() = default;
    virtual Loaded load() = 0;
    virtual bool save(const QVariantMap& values) = 0;
};

}  // namespace orlo
