#include "switcher/SwitcherModule.h"
#include "kit/Defaults.h"
#include "input/EventTap.h"
#include "input/HotKeys.h"
#include "platform/Platform.h"
#include "switcher/SwitcherHUD.h"
#include "switcher/SwitcherSession.h"
#include "switcher/SwitcherSettingsView.h"
#include <QLoggingCategory>
#include <QPointer>

Q_LOGGING_CATEGORY(lcSwitcher, "orlo.switcher", QtWarningMsg)

namespace orlo {

namespace {
constexpr quint32 KeypadEnter = 76;

quint64 triggerFlag(SwitcherSettings::Trigger trigger)
{
    return trigger == SwitcherSettings::Trigger::Command ? ModifierFlag::Command : ModifierFlag::Option;
}

quint64 foreignFlags(SwitcherSettings::Trigger trigger)
{
    return trigger == SwitcherSettings::Trigger::Command ? ModifierFlag::Option | ModifierFlag::Control
                                                          : ModifierFlag::Command | ModifierFlag::Control;
}

// What typing a key adds to the search: letters, numbers, punctuation, symbols and blanks.
// Whole characters, also those outside the basic plane (an emoji is two UTF-16 units).
QString searchText(const QString& characters)
{
    QString kept;
    for (const char32_t c : characters.toUcs4())
        if (QChar::isLetterOrNumber(c) || QChar::isPunct(c) || QChar::isSymbol(c) || c == U' ') kept += QString::fromUcs4(&c, 1);
    return kept;
}
}  // namespace

SwitcherModule::SwitcherModule(OrloContext& context, QObject* parent)
    : OrloModule(context.defaults, parent), context_(context), settings_(context.defaults),
      windowList_(*context.platform.windowCatalog, *context.platform.workspace),
      browserTabs_(*context.platform.scripting, *context.platform.windowCatalog),
      hud_(std::make_unique<SwitcherHUD>(*context.platform.screens, *context.platform.mouseMonitor, *context.platform.windowServer,
                                         *context.platform.overlay, context.platform.eventTaps->seesOnlyOwnWindows()))
{
    connect(hud_.get(), &SwitcherHUD::focused, this, &SwitcherModule::displayFocused);
    // Slow: each try asks the X server whether another program holds the keys.
    retryTrigger_.setInterval(10000);
    connect(&retryTrigger_, &QTimer::timeout, this, &SwitcherModule::retryRefusedTrigger);
    // Orlo may end without stopping its modules: the keyboard must never stay grabbed.
    connect(&context.events, &AppEvents::willTerminate, this, [this] {
        if (tap_) tap_->stop();
        if (commandTap_) commandTap_->stop();
        if (systemSwitcherOff_ && context_.platform.systemSwitcher->setEnabled(true)) systemSwitcherOff_ = false;
    });
}

SwitcherModule::~SwitcherModule()
{
    if (started_) stop();
}

QString SwitcherModule::triggerName(SwitcherSettings::Trigger trigger)
{
#ifdef Q_OS_MACOS
    return trigger == SwitcherSettings::Trigger::Command ? tr("Command-Tab") : tr("Option-Tab");
#else
    return trigger == SwitcherSettings::Trigger::Command ? tr("Super-Tab") : tr("Alt-Tab");
#endif
}

std::unique_ptr<EventTap> SwitcherModule::makeTap()
{
    return std::make_unique<EventTap>(*context_.platform.eventTaps,
                                      QList<KeyEventType>{KeyEventType::KeyDown, KeyEventType::KeyUp, KeyEventType::FlagsChanged},
                                      [this](KeyEventType type, const KeyEvent& event) { return handle(type, event); });
}

void SwitcherModule::startTap()
{
    const quint64 trigger = triggerFlag(settings_.trigger());
    const Shortcut shortcut{KeyCode::Tab, trigger};
    // A program holding the trigger through XInput 2 does not refuse the tap, yet its presses
    // never reach the tap: that is a refusal too.
    triggerRefused_ = context_.hotKeys.isHeldByAnotherApp(shortcut);
    if (!triggerRefused_) {
        std::unique_ptr<EventTap> tap = makeTap();
        tap->setWatchedKeys({{KeyCode::Tab, trigger}, {KeyCode::Tab, trigger | ModifierFlag::Shift}});
        triggerRefused_ = !tap->start() || !registerTriggerKeys(trigger);
        if (!triggerRefused_) tap_ = std::move(tap);
    }
    freeTrigger_.reset();
    if (triggerRefused_) {
        const QString bindingsFile = context_.hotKeys.bindingsFile();
        if (bindingsFile.isEmpty())
            qCWarning(lcSwitcher, "%s is held by another program; the switcher is off", qPrintable(triggerName(settings_.trigger())));
        else
            qCWarning(lcSwitcher, "%s reaches Orlo once %s binds it to \"orlo switcher\"; its settings page gives the line",
                      qPrintable(triggerName(settings_.trigger())), qPrintable(bindingsFile));
        const auto other = settings_.trigger() == SwitcherSettings::Trigger::Command ? SwitcherSettings::Trigger::Option
                                                                                       : SwitcherSettings::Trigger::Command;
        if (isFree(other)) freeTrigger_ = other;
    }
    const HotKeys::Taken taken{id(), title(), shortcut, QStringLiteral("orlo switcher")};
    context_.hotKeys.reportTaken(id(), triggerRefused_ ? QList<HotKeys::Taken>{taken} : QList<HotKeys::Taken>{});
    // Where the compositor binds keys only in its own configuration, no later try could succeed.
    if (triggerRefused_ && context_.hotKeys.bindingsFile().isEmpty()) retryTrigger_.start();
    else retryTrigger_.stop();
}

bool SwitcherModule::registerTriggerKeys(quint64 trigger)
{
    // Where the tap sees only the keys typed into Orlo's windows, the trigger is a hot key
    // until the display has the keyboard.
    if (!context_.platform.eventTaps->seesOnlyOwnWindows()) return true;
    HotKeys& hotKeys = context_.hotKeys;
    const auto forwards = hotKeys.registerHotKey({KeyCode::Tab, trigger}, [this] { triggerPressed(false); });
    if (!forwards) return false;
    triggerKeys_ << *forwards;
    // Without it Shift still steps back once the display is open.
    if (const auto backwards = hotKeys.registerHotKey({KeyCode::Tab, trigger | ModifierFlag::Shift}, [this] { triggerPressed(true); }))
        triggerKeys_ << *backwards;
    return true;
}

void SwitcherModule::stopTap()
{
    context_.hotKeys.unregister(triggerKeys_);
    triggerKeys_.clear();
    if (tap_) tap_->stop();
    tap_.reset();
}

void SwitcherModule::retryRefusedTrigger()
{
    if (!started_ || !triggerRefused_ || active_) return;
    startTap();
    if (triggerRefused_) return;
    qCDebug(lcSwitcher, "%s is free now: the switcher is on", qPrintable(triggerName(settings_.trigger())));
    applySystemSwitcher();
    emit stateChanged();
}

QString SwitcherModule::triggerSwitchOffPlace() const { return context_.platform.systemSwitcher->switchOffPlace(); }

bool SwitcherModule::isFree(SwitcherSettings::Trigger trigger)
{
    HotKeys& hotKeys = context_.hotKeys;
    for (const Shortcut& keys : {Shortcut{KeyCode::Tab, triggerFlag(trigger)}, Shortcut{KeyCode::Tab, triggerFlag(trigger) | ModifierFlag::Shift}})
        if (hotKeys.isHeldByAnotherApp(keys) || !hotKeys.isFree(keys)) return false;
    return true;
}

void SwitcherModule::start()
{
    if (started_) return;
    started_ = true;
    Workspace& workspace = *context_.platform.workspace;
    appOrder_.clear();
    if (const auto front = workspace.frontmostApplication()) appOrder_ << front->pid;
    observers_ << connect(&workspace, &Workspace::applicationActivated, this, [this](const AppInfo& app) {
        appOrder_.removeAll(app.pid);
        appOrder_.prepend(app.pid);
    });
    // A new trigger takes effect at once; it is also the user's way out of a refused one.
    observers_ << connect(&context_.defaults, &Defaults::changed, this, [this](const QString& key) {
        if (key != QLatin1String(SwitcherSettings::TriggerKey)) return;
        close();
        stopTap();
        startTap();
        applySystemSwitcher();
        emit stateChanged();
    });
    startTap();
    applySystemSwitcher();
    // The first opening should be as quick as every other: the panel exists and the icons are known.
    if (tap_) {
        hud_->prepare();
        windowList_.current(settings_.includeMinimized(), settings_.excludedSet(), appOrder_);
        qCDebug(lcSwitcher, "started: %s opens the switcher", qPrintable(triggerName(settings_.trigger())));
    }
    emit stateChanged();
}

void SwitcherModule::stop()
{
    started_ = false;
    for (const auto& observer : std::as_const(observers_)) disconnect(observer);
    observers_.clear();
    close();
    stopTap();
    triggerRefused_ = false;
    retryTrigger_.stop();
    freeTrigger_.reset();
    applySystemSwitcher();
    context_.hotKeys.reportTaken(id(), {});
    emit stateChanged();
}

void SwitcherModule::applySystemSwitcher()
{
    const bool wanted = tap_ && settings_.trigger() == SwitcherSettings::Trigger::Command;
    if (wanted != systemSwitcherOff_ && context_.platform.systemSwitcher->setEnabled(!wanted)) systemSwitcherOff_ = wanted;
}

QWidget* SwitcherModule::settingsView()
{
    return new SwitcherSettingsView(*this, *context_.platform.workspace, context_.hotKeys, *context_.platform.keyboardLayout);
}

void SwitcherModule::later(std::function<void()> block)
{
    QMetaObject::invokeMethod(this, std::move(block), Qt::QueuedConnection);
}

bool SwitcherModule::handle(KeyEventType type, const KeyEvent& event)
{
    const SwitcherSettings::Trigger trigger = settings_.trigger();
    const bool triggerHeld = event.flags & triggerFlag(trigger);
    const bool shift = event.flags & ModifierFlag::Shift;
    if (type == KeyEventType::FlagsChanged) {
        // Opened by a command, the keys that ran it may be any: the last one let go switches.
        const bool letGo = byCommand_ ? !(event.flags & ModifierFlag::ShortcutMask) : !triggerHeld;
        if (active_ && letGo)
            later([this] {
                if (!session_) return;
                if (session_->sticky()) qCDebug(lcSwitcher, "let go while searching: stays open");
                else commit(std::nullopt);
            });
        return false;
    }
    if (type == KeyEventType::KeyUp) {
        // Return switches when it is let go: its release would otherwise reach the window
        // being left, whose newer user time makes a window manager (mutter) turn the switch,
        // stamped with an older key's time, away as focus stealing.
        if (active_ && switchOnRelease_ == event.keyCode) {
            switchOnRelease_.reset();
            later([this] { commit(std::nullopt); });
        }
        return active_;
    }
    if (type != KeyEventType::KeyDown) return false;

    if (event.keyCode == KeyCode::Tab && triggerHeld && !(event.flags & foreignFlags(trigger))) {
        if (!active_) {
            if (!takeKeyboard(tap_.get())) return true;
            active_ = true;
            later([this, shift] { open(shift); });
        } else {
            later([this, shift] { step(shift ? -1 : 1); });
        }
        return true;
    }
    if (!active_) return false;

    switch (event.keyCode) {
    case KeyCode::Return:
    case KeypadEnter:
        switchOnRelease_ = event.keyCode;
        break;
    case KeyCode::Tab:
        later([this, shift] { step(shift ? -1 : 1); });
        break;
    case KeyCode::Delete:
        later([this] {
            if (session_) session_->backspace();
        });
        break;
    case KeyCode::Escape:
        later([this] { cancel(); });
        break;
    case KeyCode::LeftArrow:
        later([this] { step(-1); });
        break;
    case KeyCode::RightArrow:
        later([this] { step(1); });
        break;
    case KeyCode::UpArrow:
    case KeyCode::DownArrow: {
        const int sign = event.keyCode == KeyCode::UpArrow ? -1 : 1;
        later([this, sign] {
            if (session_) step(sign * (session_->layout() == SwitcherSettings::Layout::Grid ? session_->columns() : 1));
        });
        break;
    }
    default: {
        const QString text = searchText(event.text);
        if (!text.isEmpty())
            later([this, text] {
                if (session_) session_->type(text);
            });
        break;
    }
    }
    return true;
}

QString SwitcherModule::openByCommand()
{
    if (!started_) return tr("The window switcher is off: turn it on in Orlo's panel.");
    if (active_) {
        step(1);
        return {};
    }
    EventTap* tap = tap_.get();
    if (!tap) {
        commandTap_ = makeTap();
        tap = commandTap_->start() ? commandTap_.get() : nullptr;
    }
    if (!takeKeyboard(tap)) {
        commandTap_.reset();
        return tr("Another program holds the keyboard: the switcher cannot open now.");
    }
    active_ = true;
    byCommand_ = true;
    open(false);
    return {};
}

void SwitcherModule::triggerPressed(bool backwards)
{
    if (active_) {
        step(backwards ? -1 : 1);
        return;
    }
    if (!takeKeyboard(tap_.get())) return;
    active_ = true;
    open(backwards);
}

bool SwitcherModule::takeKeyboard(EventTap* tap)
{
    // From now on every key and the release of the modifier must reach the switcher; while
    // another program holds the keyboard it stays closed, or nothing could close it.
    if (tap && tap->setSeesAllKeys(true)) return true;
    if (tap) tap->setSeesAllKeys(false);
    qCDebug(lcSwitcher, "the keyboard is held by another program: not opening");
    return false;
}

void SwitcherModule::step(int delta)
{
    if (session_) session_->move(delta);
}

QList<SwitchItem> SwitcherModule::withTabs(const QList<SwitchItem>& windows, const BrowserTabs::Tabs& tabs,
                                           const QSet<QString>& excluded)
{
    return merge(windows, tabs, browserTabs_.runningBrowsers(excluded),
                 [this](const RunningApp& app) { return windowList_.icon(app.bundleId); });
}

void SwitcherModule::open(bool backwards)
{
    if (!active_ || session_) return;
    const QSet<QString> excluded = settings_.excludedSet();
    const QList<SwitchItem> windows = windowList_.current(settings_.includeMinimized(), excluded, appOrder_);
    const bool tabs = settings_.browserTabs() && browserTabs_.isAvailable();
    session_ = std::make_unique<SwitcherSession>(tabs ? withTabs(windows, browserTabs_.cache(), excluded) : windows,
                                                 settings_.layout());
    const int count = int(session_->filtered().size());
    session_->setSelection(backwards ? std::max(count - 1, 0) : (count >= 2 ? 1 : 0));
    const quint64 opening = ++openings_;
    hud_->show(*session_, [this](const SwitchItem& item) { commit(item); }, [this] { cancel(); });
    if (lcSwitcher().isDebugEnabled()) {
        QStringList ids;
        for (const SwitchItem& item : session_->items()) ids << item.id + (item.isMinimized() ? QStringLiteral("(minimized)") : QString());
        const QRect at = hud_->geometry();
        qCDebug(lcSwitcher, "opened at %d,%d %dx%d with %d items: %s", at.x(), at.y(), at.width(), at.height(), count,
                qPrintable(ids.join(QLatin1Char(' '))));
        QStringList titles;
        for (const SwitchItem& item : session_->items()) titles << item.title;
        qCDebug(lcSwitcher, "listed: %s", qPrintable(titles.join(QStringLiteral(" | "))));
    }
    emit opened();
    if (!tabs) return;
    browserTabs_.refresh(excluded, [this, opening, windows, excluded](const BrowserTabs::Tabs& fresh) {
        // Tabs that arrive after the switcher closed, or for an earlier opening, are dropped.
        if (!active_ || !session_ || opening != openings_) return;
        session_->setItems(withTabs(windows, fresh, excluded));
        if (hud_->isVisible()) hud_->fit();
    });
}

void SwitcherModule::displayFocused()
{
    // The keys typed before the display had the focus went elsewhere; so did the release of a
    // modifier let go by then. Opened by its trigger, the switcher switches as that release
    // would have; opened by a command, it stays open until Return, Escape or a click.
    const EventTap* tap = tap_ ? tap_.get() : commandTap_.get();
    const std::optional<quint64> held = tap ? tap->modifierFlags() : std::nullopt;
    const quint64 wanted = byCommand_ ? ModifierFlag::ShortcutMask : triggerFlag(settings_.trigger());
    if (!held || (*held & wanted)) {
        qCDebug(lcSwitcher, "the display has the keyboard: letting go switches");
    } else if (byCommand_ || !session_ || session_->sticky()) {
        qCDebug(lcSwitcher, "the display has the keyboard, let go already: stays open");
    } else {
        qCDebug(lcSwitcher, "the display has the keyboard, let go already: switching");
        commit(std::nullopt);
    }
}

void SwitcherModule::releaseKeyboard()
{
    active_ = false;
    byCommand_ = false;
    switchOnRelease_.reset();
    if (tap_) tap_->setSeesAllKeys(false);
    if (commandTap_) commandTap_->stop();
    commandTap_.reset();
}

void SwitcherModule::close()
{
    const bool wasOpen = active_ || session_;
    releaseKeyboard();
    session_.reset();
    hud_->hide();
    if (wasOpen) emit closed();
}

void SwitcherModule::cancel()
{
    qCDebug(lcSwitcher, "cancelled");
    close();
}

void SwitcherModule::commit(std::optional<SwitchItem> item)
{
    if (!item && session_) item = session_->selected();
    // The window system starts switching before the panel is taken down: that is what the
    // user waits for.
    if (item) {
        qCDebug(lcSwitcher, "switching to %s", qPrintable(item->id));
        if (const auto* tab = std::get_if<BrowserTab>(&item->kind)) {
            browserTabs_.select(*tab);
        } else {
            const auto& window = std::get<SwitchItem::Window>(item->kind);
            WindowCatalog& catalog = *context_.platform.windowCatalog;
            if (window.element)
                catalog.raise(*window.element, window.minimized);
            else
                catalog.activate(item->pid);
        }
    }
    close();
}

QList<SwitchItem> SwitcherModule::merge(QList<SwitchItem> items, const BrowserTabs::Tabs& tabs, const QList<RunningApp>& browsers,
                                        const std::function<QIcon(const RunningApp&)>& icon)
{
    for (const RunningApp& browser : browsers) {
        const QList<BrowserTab> list = tabs.value(browser.bundleId);
        if (list.isEmpty()) continue;
        QList<SwitchItem> tabItems;
        for (const BrowserTab& tab : list) {
            SwitchItem item;
            item.id = QStringLiteral("t%1-%2-%3").arg(tab.bundleID).arg(tab.windowID).arg(tab.index);
            item.pid = browser.pid;
            item.appName = browser.name.isEmpty() ? QStringLiteral("Browser") : browser.name;
            item.icon = icon(browser);
            item.title = tab.title;
            item.kind = tab;
            tabItems << item;
        }
        qsizetype at = items.size();
        for (qsizetype i = items.size() - 1; i >= 0; --i)
            if (items[i].pid == browser.pid) {
                at = i + 1;
                break;
            }
        for (qsizetype i = 0; i < tabItems.size(); ++i) items.insert(at + i, tabItems[i]);
    }
    return items;
}

}  // namespace orlo
