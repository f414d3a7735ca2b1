#pragma once
#include <QSet>
#include <QString>
#include <QStringList>

namespace orlo {

class Defaults;

// The switcher's preferences, read afresh from the defaults every time they are needed.
class SwitcherSettings {
public:
    enum class Trigger { Option, Command };
    enum class Layout { List, Grid };

    static constexpr const char* TriggerKey = "switcher.trigger";
    static constexpr const char* IncludeMinimizedKey = "switcher.includeMinimized";
    static constexpr const char* LayoutKey = "switcher.layout";
    static constexpr const char* BrowserTabsKey = "switcher.browserTabs";
    static constexpr const char* ExcludedKey = "switcher.excluded";

    explicit SwitcherSettings(Defaults& defaults) : defaults_(defaults) {}

    Trigger trigger() const;
    bool includeMinimized() const;
    Layout layout() const;
    bool browserTabs() const;
    QStringList excluded() const;
    QSet<QString> excludedSet() const;

    void setTrigger(Trigger trigger);
    void setIncludeMinimized(bool on);
    void setLayout(Layout layout);
    void setBrowserTabs(bool on);
    // Stored sorted, without duplicates.
    void setExcluded(const QStringList& bundleIds);

    static QString name(Trigger trigger);
    static QString name(Layout layout);

private:
    Defaults& defaults_;
};

}  // namespace orlo
