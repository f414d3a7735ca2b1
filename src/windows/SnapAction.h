#pragma once
#include "input/Shortcut.h"
#include "windows/SnapArea.h"
#include <QHash>
#include <QList>
#include <QString>
#include <optional>

namespace orlo {

// Something the user can bind to a shortcut: snapping to one of the areas (ordinals 0-15,
// in area order), or one of the four other actions (16-19).
class SnapAction {
public:
    enum Other : quint8 { nextDisplay = SnapArea::count, previousDisplay, restore, autoLayout };
    static constexpr int count = SnapArea::count + 4;

    constexpr SnapAction(SnapArea area) : ordinal_(quint8(SnapArea::Value(area))) {}
    constexpr SnapAction(SnapArea::Value area) : ordinal_(quint8(area)) {}
    constexpr SnapAction(Other other) : ordinal_(quint8(other)) {}
    static std::optional<SnapAction> fromOrdinal(int ordinal);

    // The areas in their order, then next display, previous display, restore, grid: the
    // order of the settings list and of the areas of one shortcut's cycle.
    static const QList<SnapAction>& all();

    int ordinal() const { return ordinal_; }
    std::optional<SnapArea> area() const;
    // The name under which the action's shortcut is stored.
    QString key() const;
    static std::optional<SnapAction> fromKey(const QString& key);
    QString title() const;
    // The word that names the action on Orlo's command line ("left-half" in
    // "orlo snap left-half"): the key in lower case, its words joined by hyphens.
    QString commandName() const;
    static std::optional<SnapAction> fromCommandName(const QString& name);
    Shortcut defaultShortcut() const;

    bool operator==(const SnapAction&) const = default;

private:
    quint8 ordinal_;
};

// Another set of keys for every action, for window managers that keep some of the default
// keys for themselves: the default keys with other modifiers.
struct SnapKeySet {
    quint64 modifiers;  // what Control+Alt becomes; Shift tells apart what a third modifier did

    static const QList<SnapKeySet>& alternatives();
    Shortcut shortcut(SnapAction action) const;
    QHash<SnapAction, Shortcut> shortcuts() const;
};

inline size_t qHash(SnapAction action, size_t seed = 0) { return ::qHash(action.ordinal(), seed); }

}  // namespace orlo
