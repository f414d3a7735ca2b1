#pragma once
#include "input/Shortcut.h"
#include "windows/SnapAction.h"
#include "windows/SnapAreaSet.h"
#include "windows/SnapScreenKind.h"
#include <QHash>
#include <QObject>
#include <optional>

namespace orlo {

class Defaults;

// The windows module's settings, each kept under a "windows." key of the defaults as soon
// as it changes. Change signals fire only when a value really changed.
class SnapSettings : public QObject {
    Q_OBJECT
public:
    explicit SnapSettings(Defaults& defaults, QObject* parent = nullptr);

    static QHash<SnapAction, Shortcut> defaultShortcuts();

    // An action without a shortcut (cleared by the user) has none here.
    const QHash<SnapAction, Shortcut>& shortcuts() const { return shortcuts_; }
    std::optional<Shortcut> shortcut(SnapAction action) const;
    // Several actions may share one shortcut: pressing it cycles through their areas.
    void setShortcut(std::optional<Shortcut> shortcut, SnapAction action);
    void restoreDefaultShortcuts();
    // Every action's shortcut at once, e.g. another set of keys; an action left out has none.
    void setShortcuts(const QHash<SnapAction, Shortcut>& shortcuts);

    double gap() const { return gap_; }
    void setGap(double gap);
    bool dragToSnap() const { return dragToSnap_; }
    void setDragToSnap(bool on);
    bool autoLayoutAllApps() const { return autoLayoutAllApps_; }
    void setAutoLayoutAllApps(bool on);

    // The preset of a kind of screen: the stored one, else thirds first on ultrawide screens
    // and halves first on the others.
    SnapAreaSet rule(SnapScreenKind kind) const;
    std::optional<SnapAreaSet> storedRule(SnapScreenKind kind) const;
    void setRule(SnapScreenKind kind, std::optional<SnapAreaSet> preset);

    // Recording a new shortcut for one action on the settings page.
    std::optional<SnapAction> recording() const { return recording_; }
    void startRecording(SnapAction action);
    void endRecording();
    // A key pressed while recording. Escape ends it without change, Delete without modifiers
    // clears the shortcut, a key with Control, Option or Command becomes the shortcut. Returns
    // false for a key that cannot be a shortcut (the caller beeps); recording goes on then.
    bool recordKey(quint32 keyCode, quint64 flags);

signals:
    void shortcutsChanged();
    void recordingChanged();
    void gapChanged(double gap);
    void dragToSnapChanged(bool on);
    void autoLayoutAllAppsChanged(bool on);
    void rulesChanged();

private:
    void loadShortcuts();
    void saveShortcuts();
    void saveRules();

    Defaults& defaults_;
    QHash<SnapAction, Shortcut> shortcuts_;
    std::optional<SnapAction> recording_;
    double gap_ = 0;
    bool dragToSnap_ = true;
    bool autoLayoutAllApps_ = false;
    QHash<SnapScreenKind::Value, SnapAreaSet> rules_;
};

}  // namespace orlo
