#pragma once
#include "clipboard/ExcludedApp.h"
#include "input/Shortcut.h"
#include <QObject>
#include <functional>
#include <optional>

namespace orlo {

class Defaults;

// The clipboard history's settings, kept in the defaults under "clipboard.*". A stored value
// that is missing or does not decode reads as the default.
class ClipboardSettings : public QObject {
    Q_OBJECT
public:
    static const Shortcut DefaultShortcut;  // Command-Shift-V
    static constexpr qint64 DefaultMaxItems = 200;
    static QList<ExcludedApp> defaultExcluded();

    explicit ClipboardSettings(Defaults& defaults, QObject* parent = nullptr);

    Shortcut shortcut() const;
    void setShortcut(const Shortcut& shortcut);
    qint64 maxItems() const;
    // Stores the value and calls onMaxItemsChange, even when the value is the same.
    void setMaxItems(qint64 maxItems);
    QList<ExcludedApp> excluded() const;
    void setExcluded(const QList<ExcludedApp>& apps);
    bool autoPaste() const;
    void setAutoPaste(bool on);

    // Whether copies made while this application is in front are ignored (case-sensitive).
    bool isExcluded(const std::optional<QString>& bundleID) const;

    std::function<void()> onShortcutChange;
    std::function<void()> onMaxItemsChange;

signals:
    // Any of the settings changed, here or in the defaults store.
    void changed();

private:
    Defaults& defaults_;
    // Parsed once per stored value: the list is consulted on every copy.
    mutable std::optional<QList<ExcludedApp>> excludedCache_;
};

}  // namespace orlo
