#pragma once
#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace orlo {

// An application whose copies the clipboard history ignores.
struct ExcludedApp {
    QString bundleID;
    QString name;  // for display

    bool operator==(const ExcludedApp&) const = default;

    // A JSON array of objects with "bundleID" and "name"; nothing when the JSON is not that.
    static QByteArray toJson(const QList<ExcludedApp>& apps);
    static std::optional<QList<ExcludedApp>> fromJson(const QByteArray& json);
};

}  // namespace orlo
