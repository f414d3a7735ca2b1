#include "windows/SnapAction.h"
#include "platform/Keys.h"

namespace orlo {

namespace {
using namespace ModifierFlag;
constexpr quint64 ControlOption = Control | Option;

struct OtherInfo {
    const char* key;
    const char* title;
};
constexpr OtherInfo others[] = {
    {"nextDisplay", "Next display"},
    {"previousDisplay", "Previous display"},
    {"restore", "Restore previous size"},
    {"autoLayout", "Arrange windows in a grid"},
};

// Indexed by the action's ordinal.
const Shortcut defaultShortcuts[SnapAction::count] = {
    {KeyCode::Return, ControlOption},          // maximize
    {KeyCode::Return, ControlOption | Shift},  // almostMaximize
    {8, ControlOption},                        // center: C
    {KeyCode::LeftArrow, ControlOption},       // leftHalf
    {KeyCode::RightArrow, ControlOption},      // rightHalf
    {KeyCode::UpArrow, ControlOption},         // topHalf
    {KeyCode::DownArrow, ControlOption},       // bottomHalf
    {2, ControlOption},                        // leftThird: D
    {3, ControlOption},                        // centerThird: F
    {5, ControlOption},                        // rightThird: G
    {14, ControlOption},                       // leftTwoThirds: E
    {17, ControlOption},                       // rightTwoThirds: T
    {32, ControlOption},                       // topLeft: U
    {34, ControlOption},                       // topRight: I
    {38, ControlOption},                       // bottomLeft: J
    {40, ControlOption},                       // bottomRight: K
    {KeyCode::RightArrow, ControlOption | Command},  // nextDisplay
    {KeyCode::LeftArrow, ControlOption | Command},   // previousDisplay
    {KeyCode::Delete, ControlOption},                // restore
    {KeyCode::A, ControlOption},                     // autoLayout
};
}  // namespace

const QList<SnapKeySet>& SnapKeySet::alternatives()
{
    // Super is rarely part of a window manager's own bindings beside Control and Alt; GNOME's
    // also keep Control+Alt+Super+arrows, so the second set leaves Alt out.
    static const QList<SnapKeySet> sets{{ControlOption | Command}, {Control | Command}};
    return sets;
}

Shortcut SnapKeySet::shortcut(SnapAction action) const
{
    const Shortcut standard = action.defaultShortcut();
    const bool third = standard.modifiers != ControlOption;
    return {standard.keyCode, modifiers | (third ? Shift : 0)};
}

QHash<SnapAction, Shortcut> SnapKeySet::shortcuts() const
{
    QHash<SnapAction, Shortcut> map;
    for (SnapAction action : SnapAction::all()) map.insert(action, shortcut(action));
    return map;
}

std::optional<SnapAction> SnapAction::fromOrdinal(int ordinal)
{
    if (ordinal < 0 || ordinal >= count) return std::nullopt;
    if (ordinal < SnapArea::count) return SnapAction(SnapArea::Value(ordinal));
    return SnapAction(Other(ordinal));
}

const QList<SnapAction>& SnapAction::all()
{
    static const QList<SnapAction> list = [] {
        QList<SnapAction> l;
        for (int i = 0; i < count; ++i) l << *fromOrdinal(i);
        return l;
    }();
    return list;
}

std::optional<SnapArea> SnapAction::area() const
{
    if (ordinal_ >= SnapArea::count) return std::nullopt;
    return SnapArea(SnapArea::Value(ordinal_));
}

QString SnapAction::key() const
{
    if (auto a = area()) return a->rawValue();
    return QString::fromLatin1(others[ordinal_ - SnapArea::count].key);
}

std::optional<SnapAction> SnapAction::fromKey(const QString& key)
{
    for (SnapAction action : all())
        if (action.key() == key) return action;
    return std::nullopt;
}

QString SnapAction::commandName() const
{
    QString name;
    for (QChar c : key()) {
        if (c.isUpper()) name += QLatin1Char('-');
        name += c.toLower();
    }
    return name;
}

std::optional<SnapAction> SnapAction::fromCommandName(const QString& name)
{
    for (SnapAction action : all())
        if (action.commandName() == name) return action;
    return std::nullopt;
}

QString SnapAction::title() const
{
    if (auto a = area()) return a->title();
    return QString::fromLatin1(others[ordinal_ - SnapArea::count].title);
}

Shortcut SnapAction::defaultShortcut() const { return defaultShortcuts[ordinal_]; }

}  // namespace orlo
