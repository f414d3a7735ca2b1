#include "switcher/SwitcherSettings.h"
#include "kit/Defaults.h"

namespace orlo {

SwitcherSettings::Trigger SwitcherSettings::trigger() const
{
    return defaults_.stringValue(QLatin1String(TriggerKey)) == name(Trigger::Command) ? Trigger::Command : Trigger::Option;
}

bool SwitcherSettings::includeMinimized() const { return defaults_.boolValue(QLatin1String(IncludeMinimizedKey)).value_or(true); }

SwitcherSettings::Layout SwitcherSettings::layout() const
{
    return defaults_.stringValue(QLatin1String(LayoutKey)) == name(Layout::Grid) ? Layout::Grid : Layout::List;
}

bool SwitcherSettings::browserTabs() const { return defaults_.boolValue(QLatin1String(BrowserTabsKey)).value_or(false); }

QStringList SwitcherSettings::excluded() const { return defaults_.stringListValue(QLatin1String(ExcludedKey)).value_or(QStringList()); }

QSet<QString> SwitcherSettings::excludedSet() const
{
    const QStringList list = excluded();
    return QSet<QString>(list.cbegin(), list.cend());
}

void SwitcherSettings::setTrigger(Trigger trigger) { defaults_.set(QLatin1String(TriggerKey), name(trigger)); }

void SwitcherSettings::setIncludeMinimized(bool on) { defaults_.set(QLatin1String(IncludeMinimizedKey), on); }

void SwitcherSettings::setLayout(Layout layout) { defaults_.set(QLatin1String(LayoutKey), name(layout)); }

void SwitcherSettings::setBrowserTabs(bool on) { defaults_.set(QLatin1String(BrowserTabsKey), on); }

void SwitcherSettings::setExcluded(const QStringList& bundleIds)
{
    QStringList list = bundleIds;
    list.sort();
    list.removeDuplicates();
    defaults_.set(QLatin1String(ExcludedKey), list);
}

QString SwitcherSettings::name(Trigger trigger)
{
    return trigger == Trigger::Command ? QStringLiteral("command") : QStringLiteral("option");
}

QString SwitcherSettings::name(Layout layout) { return layout == Layout::Grid ? QStringLiteral("grid") : QStringLiteral("list"); }

}  // namespace orlo
