#include "windows/SnapScreenKind.h"
#include <cmath>

namespace orlo {

namespace {
constexpr const char* kindRaws[] = {"laptop", "standard", "ultrawide"};
constexpr const char* kindTitles[] = {"Laptop screen", "Standard display", "Ultrawide (21:9 and wider)"};
// A little below 21/9, so that displays sold as 21:9 (2560x1080, 3440x1440) count.
constexpr double ultrawideRatio = 2.3;
}  // namespace

const std::array<SnapScreenKind, SnapScreenKind::count>& SnapScreenKind::all()
{
    static constexpr std::array<SnapScreenKind, count> list{laptop, standard, ultrawide};
    return list;
}

std::optional<SnapScreenKind> SnapScreenKind::fromRawValue(const QString& raw)
{
    for (SnapScreenKind kind : all())
        if (raw == kind.rawValue()) return kind;
    return std::nullopt;
}

QString SnapScreenKind::rawValue() const { return QString::fromLatin1(kindRaws[value_]); }

QString SnapScreenKind::title() const { return QString::fromLatin1(kindTitles[value_]); }

SnapScreenKind SnapScreenKind::of(const ScreenInfo& screen)
{
    if (screen.builtIn) return laptop;
    const double w = screen.frame.width(), h = screen.frame.height();
    if (h > 1) {
        const double ratio = w / h;
        return !std::isnan(ratio) && ratio >= ultrawideRatio ? ultrawide : standard;
    }
    return w >= ultrawideRatio ? ultrawide : standard;
}

}  // namespace orlo
