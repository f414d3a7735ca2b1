#pragma once
#include "platform/Screens.h"
#include <QString>
#include <array>
#include <optional>

namespace orlo {

// The kinds of screen whose cycling presets the user sets apart.
class SnapScreenKind {
public:
    enum Value : quint8 { laptop, standard, ultrawide };
    static constexpr int count = 3;

    constexpr SnapScreenKind(Value value) : value_(value) {}
    constexpr operator Value() const { return value_; }

    static const std::array<SnapScreenKind, count>& all();
    static std::optional<SnapScreenKind> fromRawValue(const QString& raw);
    QString rawValue() const;
    QString title() const;

    // A built-in panel is a laptop screen whatever its shape; otherwise the full frame's
    // aspect ratio decides, 21:9 displays counting as ultrawide.
    static SnapScreenKind of(const ScreenInfo& screen);

private:
    Value value_;
};

}  // namespace orlo
