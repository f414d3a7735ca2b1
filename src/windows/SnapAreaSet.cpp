#include "windows/SnapAreaSet.h"

namespace orlo {

namespace {
constexpr const char* setRaws[] = {"halves", "halvesAndThirds", "thirdsFirst"};
constexpr const char* titles[] = {"Halves only", "Half, two-thirds, third", "Third, half, two-thirds"};
}  // namespace

const std::array<SnapAreaSet, SnapAreaSet::count>& SnapAreaSet::all()
{
    static constexpr std::array<SnapAreaSet, count> list{halves, halvesAndThirds, thirdsFirst};
    return list;
}

std::optional<SnapAreaSet> SnapAreaSet::fromRawValue(const QString& raw)
{
    for (SnapAreaSet set : all())
        if (raw == set.rawValue()) return set;
    return std::nullopt;
}

QString SnapAreaSet::rawValue() const { return QString::fromLatin1(setRaws[value_]); }

QString SnapAreaSet::title() const { return QString::fromLatin1(titles[value_]); }

QList<SnapArea> SnapAreaSet::expand(SnapArea area) const
{
    switch (value_) {
    case halves:
        break;
    case halvesAndThirds:
        if (area == SnapArea::leftHalf) return {SnapArea::leftHalf, SnapArea::leftTwoThirds, SnapArea::leftThird};
        if (area == SnapArea::rightHalf) return {SnapArea::rightHalf, SnapArea::rightTwoThirds, SnapArea::rightThird};
        break;
    case thirdsFirst:
        if (area == SnapArea::leftHalf) return {SnapArea::leftThird, SnapArea::leftHalf, SnapArea::leftTwoThirds};
        if (area == SnapArea::rightHalf) return {SnapArea::rightThird, SnapArea::rightHalf, SnapArea::rightTwoThirds};
        if (area == SnapArea::center) return {SnapArea::centerThird, SnapArea::center};
        break;
    }
    return {area};
}

QList<SnapArea> SnapAreaSet::cycle(const QList<SnapArea>& bound) const
{
    QList<SnapArea> list;
    for (SnapArea area : bound)
        for (SnapArea expanded : expand(area))
            if (!list.contains(expanded)) list << expanded;
    return list;
}

}  // namespace orlo
