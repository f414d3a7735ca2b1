#pragma once
#include <QTimer>
#include "kit/OrloContext.h"
#include "kit/OrloModule.h"
#include "input/HotKeys.h"
#include "platform/Keys.h"
#include "switcher/BrowserTabs.h"
#include "switcher/SwitchItem.h"
#include "switcher/SwitcherSettings.h"
#include "switcher/WindowList.h"
#include <QList>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

class EventTap;
class SwitcherHUD;
class SwitcherSession;

// The window switcher: while the trigger modifier is held, Tab opens a display of every
// window of the current desktop, most recently used application first; further Tabs step,
// typing searches, and letting go of the modifier switches to the chosen window or tab.
class SwitcherModule : public OrloModule {
    Q_OBJECT
public:
    explicit SwitcherModule(OrloContext& context, QObject* parent = nullptr);
    ~SwitcherModule() override;

    QString id() const override { return QStringLiteral("switcher"); }
    QString title() const override { return tr("Window Switcher"); }
    QString symbol() const override { return QStringLiteral("rectangle.stack"); }
    QString summary() const override { return tr("Switch between every window and tab, with search."); }
    bool needsAccessibility() const override { return true; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;

    // The tap's handler: true swallows the event.
    bool handle(KeyEventType type, const KeyEvent& event);
    // Opens the switcher for a command, typically bound to a key the window manager keeps:
    // Orlo takes the keyboard itself, Tab and the arrows step, and letting go of the last
    // modifier or Return switches. A second command while open steps, as Tab does. Returns
    // why it could not open, or an empty text.
    QString openByCommand();

    // Started, and holding its trigger keys.
    bool isRunning() const { return tap_ != nullptr; }
    // The system refused the trigger keys the last time the module started (another program,
    // typically the window manager, holds them).
    bool isTriggerRefused() const { return triggerRefused_; }
    // Tries a refused trigger again: the user may have freed it in the window manager's
    // settings. Done when the settings page is shown and, while refused, every little while.
    void retryRefusedTrigger();
    // The other trigger, when the refused one's keys are held elsewhere and its own are free.
    std::optional<SwitcherSettings::Trigger> freeTrigger() const { return freeTrigger_; }
    // Where the desktop that holds the trigger lets the user free it; empty when not known.
    QString triggerSwitchOffPlace() const;
    bool isActive() const { return active_; }
    SwitcherSession* session() const { return session_.get(); }
    SwitcherSettings& settings() { return settings_; }
    BrowserTabs& browserTabs() { return browserTabs_; }
    SwitcherHUD& hud() { return *hud_; }
    const QList<qint64>& appOrder() const { return appOrder_; }

    // Browser tabs placed after the last window of their browser, or at the end.
    static QList<SwitchItem> merge(QList<SwitchItem> items, const BrowserTabs::Tabs& tabs, const QList<RunningApp>& browsers,
                                   const std::function<QIcon(const RunningApp&)>& icon);
    // The trigger as the user names it: "Alt-Tab" or "Super-Tab" on Linux.
    static QString triggerName(SwitcherSettings::Trigger trigger);

signals:
    // Started, stopped, or the trigger refused.
    void stateChanged();
    void opened();
    void closed();

private:
    void later(std::function<void()> block);
    void open(bool backwards);
    void commit(std::optional<SwitchItem> item);
    void cancel();
    void close();
    void releaseKeyboard();
    void displayFocused();
    void step(int delta);
    // A tap of every key event, handled by handle(); not started.
    std::unique_ptr<EventTap> makeTap();
    void startTap();
    // The trigger's hot keys, where the tap needs them; false when refused.
    bool registerTriggerKeys(quint64 trigger);
    void stopTap();
    // The trigger pressed outside the tap: opens the switcher, or steps while it is open.
    void triggerPressed(bool backwards);
    // Every key to the tap from now on; false, having said why, when another program holds the keyboard.
    bool takeKeyboard(EventTap* tap);
    bool isFree(SwitcherSettings::Trigger trigger);
    // The system's own switcher is off exactly while this switcher runs on the same keys.
    void applySystemSwitcher();
    QList<SwitchItem> withTabs(const QList<SwitchItem>& windows, const BrowserTabs::Tabs& tabs, const QSet<QString>& excluded);

    OrloContext& context_;
    SwitcherSettings settings_;
    WindowList windowList_;
    BrowserTabs browserTabs_;
    std::unique_ptr<SwitcherHUD> hud_;
    std::unique_ptr<EventTap> tap_;
    QList<HotKeys::Token> triggerKeys_;
    // The keyboard held for an opening by command while the trigger's own tap is refused.
    std::unique_ptr<EventTap> commandTap_;
    std::unique_ptr<SwitcherSession> session_;
    bool started_ = false;
    bool active_ = false;
    bool byCommand_ = false;
    std::optional<quint32> switchOnRelease_;  // the Return key pressed, which switches when let go
    bool triggerRefused_ = false;
    QTimer retryTrigger_;
    bool systemSwitcherOff_ = false;
    std::optional<SwitcherSettings::Trigger> freeTrigger_;
    quint64 openings_ = 0;
    QList<qint64> appOrder_;
    QList<QMetaObject::Connection> observers_;
};

}  // namespace orlo
