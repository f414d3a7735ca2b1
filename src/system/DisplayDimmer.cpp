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
    // The list follows the displays also while the dimmer is off, for the settings page.
    connect(&gamma_, &Gamma::displaysChanged, this, &DisplayDimmer::onDisplaysChanged);
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
    reapply();
}

void DisplayDimmer::stop()
{
    active_ = false;
    restoreAll();
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
    restoreAll();
    emit levelsChanged();
}

void DisplayDimmer::restoreForExit() { stop(); }

void DisplayDimmer::onDisplaysChanged()
{
    if (active_) reapply();
    else refreshDisplays();
}

// Straight from the tables each display shows to its new ones: never through the display's
// own tables, which would flash at full brightness.
void DisplayDimmer::reapply()
{
    refreshDisplays();
    for (const GammaDisplay& display : std::as_const(displays_)) apply(display);
}

void DisplayDimmer::saveLevels()
{
    QVariantMap stored;
    for (auto it = levels_.cbegin(); it != levels_.cend(); ++it) stored.insert(it.key(), it.value());
    defaults_.set(LevelsKey, stored);
}

std::optional<GammaTables> DisplayDimmer::currentTables(const GammaDisplay& display)
{
    const int capacity = gamma_.capacity(display.id);
    if (capacity <= 0) return std::nullopt;
    auto tables = gamma_.read(display.id);
    if (!tables || tables->red.isEmpty()) return std::nullopt;
    const qsizetype count = std::min<qsizetype>(capacity, tables->red.size());
    for (QVector<float>* table : {&tables->red, &tables->green, &tables->blue}) table->resize(count);
    return tables;
}

void DisplayDimmer::apply(const GammaDisplay& display)
{
    const double level = levels_.value(display.key, MaximumLevel);
    const bool undimmed = level >= 0.999;
    auto ours = dimmed_.find(display.key);
    if (undimmed && ours == dimmed_.end()) return;
    const auto current = currentTables(display);
    if (!current) return;
    if (ours != dimmed_.end() && *current != ours->written) {
        // Another program wrote its own tables since: they are the display's own now.
        dimmed_.erase(ours);
        ours = dimmed_.end();
        gamma_.forget(display);
        if (undimmed) return;
    }
    const GammaTables original = ours != dimmed_.end() ? ours->original : *current;
    if (undimmed) {
        gamma_.set(display, original, original);
        dimmed_.erase(ours);
        return;
    }
    GammaTables dimmed = original;
    for (QVector<float>* table : {&dimmed.red, &dimmed.green, &dimmed.blue})
        for (float& entry : *table) entry = float(entry * level);
    if (!gamma_.set(display, dimmed, original)) return;
    GammaTables written = gamma_.read(display.id).value_or(dimmed);
    for (QVector<float>* table : {&written.red, &written.green, &written.blue}) table->resize(dimmed.red.size());
    dimmed_.insert(display.key, {original, written});
}

void DisplayDimmer::restore(const GammaDisplay& display)
{
    const auto ours = dimmed_.find(display.key);
    if (ours == dimmed_.end()) return;
    if (currentTables(display) == ours->written) gamma_.set(display, ours->original, ours->original);
    else gamma_.forget(display);
    dimmed_.erase(ours);
}

// Displays that are not connected now are only forgotten: their CRTC may show another one.
void DisplayDimmer::restoreAll()
{
    refreshDisplays();
    for (const GammaDisplay& display : std::as_const(displays_)) restore(display);
    for (auto it = dimmed_.cbegin(); it != dimmed_.cend(); ++it) gamma_.forget(GammaDisplay{0, {}, it.key(), false});
    dimmed_.clear();
}

}  // namespace orlo
