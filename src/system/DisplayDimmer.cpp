#include "system/DisplayDimmer.h"
#include "kit/Defaults.h"
#include <algorithm>

namespace orlo {

DisplayDimmer::DisplayDimmer(Gamma& gamma, Defaults& defaults, QObject* parent)
    : QObject(parent), gamma_(gamma), defaults_(defaults)
{
    const QVariantMap stored = defaults_.dictionaryValue(LevelsKey).value_or(QVariantMap());
    for (auto it = stored.cbegin(); it != stored.cend(); ++it) {
        bool isNumber = false;
        const double level = it.value().toDouble(&isNumber);
        if (isNumber) levels_.insert(it.key(), std::clamp(level, MinimumLevel, MaximumLevel));
    }
    refreshDisplays();
}

std::optional<GammaDisplay> DisplayDimmer::main() const
{
    for (const GammaDisplay& display : displays_)
        if (display.isMain) return display;
    return std::nullopt;
}

void DisplayDimmer::refreshDisplays()
{
    const QList<GammaDisplay> now = gamma_.displays();
    if (now == displays_) return;
    displays_ = now;
    emit displaysChanged();
}

void DisplayDimmer::start()
{
    active_ = true;
    refreshDisplays();
    for (const GammaDisplay& display : std::as_const(displays_)) apply(display);
    if (!observer_) observer_ = connect(&gamma_, &Gamma::displaysChanged, this, &DisplayDimmer::reapply);
}

void DisplayDimmer::stop()
{
    disconnect(observer_);
    observer_ = {};
    active_ = false;
    gamma_.restoreAll();
}

void DisplayDimmer::setLevel(double level, const GammaDisplay& display)
{
    level = std::clamp(level, MinimumLevel, MaximumLevel);
    if (levels_.value(display.key, -1) == level) return;
    levels_.insert(display.key, level);
    saveLevels();
    if (active_) apply(display);
    emit levelsChanged();
}

void DisplayDimmer::resetAll()
{
    levels_.clear();
    defaults_.remove(LevelsKey);
    gamma_.restoreAll();
    emit levelsChanged();
}

void DisplayDimmer::restoreForExit()
{
    stop();
    originals_.clear();
}

void DisplayDimmer::reapply()
{
    gamma_.restoreAll();
    refreshDisplays();
    for (const GammaDisplay& display : std::as_const(displays_)) apply(display);
}

void DisplayDimmer::saveLevels()
{
    QVariantMap stored;
    for (auto it = levels_.cbegin(); it != levels_.cend(); ++it) stored.insert(it.key(), it.value());
    defaults_.set(LevelsKey, stored);
}

void DisplayDimmer::apply(const GammaDisplay& display)
{
    const double level = levels_.value(display.key, MaximumLevel);
    if (level >= 0.999) {
        if (const auto it = originals_.constFind(display.id); it != originals_.constEnd()) gamma_.set(display.id, *it);
        return;
    }
    if (!originals_.contains(display.id)) {
        const int capacity = gamma_.capacity(display.id);
        if (capacity <= 0) return;
        auto tables = gamma_.read(display.id);
        if (!tables || tables->red.isEmpty()) return;
        const qsizetype count = std::min<qsizetype>(capacity, tables->red.size());
        tables->red.resize(count);
        tables->green.resize(count);
        tables->blue.resize(count);
        originals_.insert(display.id, *tables);
    }
    GammaTables dimmed = originals_.value(display.id);
    for (QVector<float>* table : {&dimmed.red, &dimmed.green, &dimmed.blue})
        for (float& entry : *table) entry = float(entry * level);
    gamma_.set(display.id, dimmed);
}

}  // namespace orlo
