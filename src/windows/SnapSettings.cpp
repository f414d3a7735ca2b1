#include "windows/SnapSettings.h"
#include "kit/Defaults.h"
#include "input/ShortcutRecorder.h"
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

namespace orlo {

namespace {
const QString ShortcutsKey = QStringLiteral("windows.shortcuts");
const QString GapKey = QStringLiteral("windows.gap");
const QString DragKey = QStringLiteral("windows.dragToSnap");
const QString AllAppsKey = QStringLiteral("windows.autoLayoutAllApps");
const QString RulesKey = QStringLiteral("windows.rules");
constexpr quint32 ForwardDeleteKey = 117;

double validGap(double gap) { return std::isfinite(gap) && gap > 0 ? gap : 0; }

// The stored shortcuts: action key -> {"shortcut": {...}}, or {} for a cleared shortcut.
// Nothing when the data cannot be read as a whole.
std::optional<QHash<QString, std::optional<Shortcut>>> decodeShortcuts(const QByteArray& data)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) return std::nullopt;
    QHash<QString, std::optional<Shortcut>> stored;
    const QJsonObject all = doc.object();
    for (auto it = all.begin(); it != all.end(); ++it) {
        if (!it->isObject()) return std::nullopt;
        const QJsonValue value = it->toObject().value(QLatin1String("shortcut"));
        if (value.isUndefined() || value.isNull()) {
            stored.insert(it.key(), std::nullopt);
            continue;
        }
        if (!value.isObject()) return std::nullopt;
        const auto shortcut = Shortcut::fromJson(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
        if (!shortcut) return std::nullopt;
        stored.insert(it.key(), shortcut);
    }
    return stored;
}
}  // namespace

SnapSettings::SnapSettings(Defaults& defaults, QObject* parent) : QObject(parent), defaults_(defaults)
{
    loadShortcuts();
    gap_ = validGap(defaults_.doubleValue(GapKey).value_or(0));
    dragToSnap_ = defaults_.boolValue(DragKey).value_or(true);
    autoLayoutAllApps_ = defaults_.boolValue(AllAppsKey).value_or(false);
    const QVariantMap rules = defaults_.dictionaryValue(RulesKey).value_or(QVariantMap());
    for (auto it = rules.begin(); it != rules.end(); ++it) {
        const auto kind = SnapScreenKind::fromRawValue(it.key());
        const auto preset = SnapAreaSet::fromRawValue(it.value().toString());
        if (kind && preset && it.value().typeId() == QMetaType::QString) rules_.insert(*kind, *preset);
    }
}

QHash<SnapAction, Shortcut> SnapSettings::defaultShortcuts()
{
    QHash<SnapAction, Shortcut> map;
    for (SnapAction action : SnapAction::all()) map.insert(action, action.defaultShortcut());
    return map;
}

void SnapSettings::loadShortcuts()
{
    shortcuts_ = defaultShortcuts();
    const auto data = defaults_.dataValue(ShortcutsKey);
    if (!data) return;
    const auto stored = decodeShortcuts(*data);
    if (!stored) return;
    for (auto it = stored->begin(); it != stored->end(); ++it) {
        const auto action = SnapAction::fromKey(it.key());
        if (!action) continue;
        if (it.value())
            shortcuts_.insert(*action, *it.value());
        else
            shortcuts_.remove(*action);
    }
}

void SnapSettings::saveShortcuts()
{
    QJsonObject all;
    for (SnapAction action : SnapAction::all()) {
        QJsonObject entry;
        if (auto s = shortcut(action))
            entry.insert(QLatin1String("shortcut"), QJsonDocument::fromJson(s->toJson()).object());
        all.insert(action.key(), entry);
    }
    defaults_.set(ShortcutsKey, QJsonDocument(all).toJson(QJsonDocument::Compact));
}

std::optional<Shortcut> SnapSettings::shortcut(SnapAction action) const
{
    if (auto it = shortcuts_.constFind(action); it != shortcuts_.constEnd()) return *it;
    return std::nullopt;
}

void SnapSettings::setShortcut(std::optional<Shortcut> shortcut, SnapAction action)
{
    if (shortcut)
        shortcuts_.insert(action, *shortcut);
    else
        shortcuts_.remove(action);
    saveShortcuts();
    emit shortcutsChanged();
}

void SnapSettings::restoreDefaultShortcuts() { setShortcuts(defaultShortcuts()); }

void SnapSettings::setShortcuts(const QHash<SnapAction, Shortcut>& shortcuts)
{
    shortcuts_ = shortcuts;
    saveShortcuts();
    emit shortcutsChanged();
}

void SnapSettings::setGap(double gap)
{
    gap = validGap(gap);
    if (gap == gap_) return;
    gap_ = gap;
    defaults_.set(GapKey, gap_);
    emit gapChanged(gap_);
}

void SnapSettings::setDragToSnap(bool on)
{
    if (on == dragToSnap_) return;
    dragToSnap_ = on;
    defaults_.set(DragKey, on);
    emit dragToSnapChanged(on);
}

void SnapSettings::setAutoLayoutAllApps(bool on)
{
    if (on == autoLayoutAllApps_) return;
    autoLayoutAllApps_ = on;
    defaults_.set(AllAppsKey, on);
    emit autoLayoutAllAppsChanged(on);
}

std::optional<SnapAreaSet> SnapSettings::storedRule(SnapScreenKind kind) const
{
    if (auto it = rules_.constFind(kind); it != rules_.constEnd()) return *it;
    return std::nullopt;
}

SnapAreaSet SnapSettings::rule(SnapScreenKind kind) const
{
    if (auto stored = storedRule(kind)) return *stored;
    return kind == SnapScreenKind::ultrawide ? SnapAreaSet::thirdsFirst : SnapAreaSet::halvesAndThirds;
}

void SnapSettings::setRule(SnapScreenKind kind, std::optional<SnapAreaSet> preset)
{
    if (storedRule(kind) == preset) return;
    if (preset)
        rules_.insert(kind, *preset);
    else
        rules_.remove(kind);
    saveRules();
    emit rulesChanged();
}

void SnapSettings::saveRules()
{
    QVariantMap map;
    for (auto it = rules_.begin(); it != rules_.end(); ++it)
        map.insert(SnapScreenKind(it.key()).rawValue(), it.value().rawValue());
    defaults_.set(RulesKey, map);
}

void SnapSettings::startRecording(SnapAction action)
{
    if (recording_) endRecording();
    recording_ = action;
    emit recordingChanged();
}

void SnapSettings::endRecording()
{
    if (!recording_) return;
    recording_.reset();
    emit recordingChanged();
}

bool SnapSettings::recordKey(quint32 keyCode, quint64 flags)
{
    if (!recording_) return true;
    const SnapAction action = *recording_;
    // Delete with modifiers is a shortcut like any other (restore's default is one).
    const bool plain = !(flags & (ModifierFlag::Control | ModifierFlag::Option | ModifierFlag::Command));
    if (plain && (keyCode == KeyCode::Delete || keyCode == ForwardDeleteKey)) {
        setShortcut(std::nullopt, action);
        endRecording();
        return true;
    }
    const auto outcome = ShortcutRecorder::decide(keyCode, flags);
    if (std::holds_alternative<ShortcutRecorder::Beep>(outcome)) return false;
    if (auto* recorded = std::get_if<Shortcut>(&outcome)) setShortcut(*recorded, action);
    endRecording();
    return true;
}

}  // namespace orlo
