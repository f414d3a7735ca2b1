#pragma once
#include "windows/SnapArea.h"
#include <QList>
#include <QString>
#include <array>
#include <optional>

namespace orlo {

// What the left half, right half and center shortcuts cycle through.
class SnapAreaSet {
public:
    enum Value : quint8 { halves, halvesAndThirds, thirdsFirst };
    static constexpr int count = 3;

    constexpr SnapAreaSet(Value value) : value_(value) {}
    constexpr operator Value() const { return value_; }

    static const std::array<SnapAreaSet, count>& all();
    static std::optional<SnapAreaSet> fromRawValue(const QString& raw);
    QString rawValue() const;
    QString title() const;

    // The areas one bound area stands for under this preset, first one first.
    QList<SnapArea> expand(SnapArea area) const;
    // The cycle of a shortcut bound to several areas: each expanded in turn, repeats left out.
    QList<SnapArea> cycle(const QList<SnapArea>& bound) const;

private:
    Value value_;
};

}  // namespace orlo
