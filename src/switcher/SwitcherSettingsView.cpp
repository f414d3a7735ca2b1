#include "switcher/SwitcherSettingsView.h"
#include "kit/AppListEditor.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include "input/HotKeys.h"
#include "input/TakenKeysBox.h"
#include "platform/Workspace.h"
#include "switcher/SwitcherModule.h"
#include <QComboBox>
#include <QDesktopServices>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace orlo {

namespace {
QLabel* note(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setEnabled(false);
    return label;
}

QHBoxLayout* labelled(const QString& text, QWidget* control, QWidget* parent)
{
    auto* row = new QHBoxLayout;
    auto* label = new QLabel(text, parent);
    control->setAccessibleName(text);
    row->addWidget(label, 1);
    row->addWidget(control);
    return row;
}
}  // namespace

SwitcherSettingsView::SwitcherSettingsView(SwitcherModule& module, Workspace& workspace, HotKeys& hotKeys,
                                           KeyboardLayout& layout, QWidget* parent)
    : QWidget(parent), module_(module), workspace_(workspace), hotKeys_(hotKeys)
{
    setObjectName(QStringLiteral("SwitcherSettings"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 8, 16);
    column->setSpacing(12);
    column->addWidget(shortcutSection(hotKeys, layout));
    column->addWidget(windowsSection());
    column->addWidget(tabsSection());
    column->addWidget(excludedSection());
    column->addStretch(1);
    refresh();
    connect(&module_, &SwitcherModule::stateChanged, this, &SwitcherSettingsView::refresh);
    connect(&module_.browserTabs(), &BrowserTabs::deniedChanged, this, &SwitcherSettingsView::refresh);
}

QWidget* SwitcherSettingsView::shortcutSection(HotKeys& hotKeys, KeyboardLayout& layout)
{
    auto* box = new QGroupBox(tr("Shortcut"), this);
    auto* column = new QVBoxLayout(box);
    trigger_ = new QComboBox(box);
    trigger_->setObjectName(QStringLiteral("trigger"));
#ifdef Q_OS_MACOS
    trigger_->addItem(tr("⌥⇥ Option-Tab"), SwitcherSettings::name(SwitcherSettings::Trigger::Option));
    trigger_->addItem(tr("⌘⇥ Command-Tab"), SwitcherSettings::name(SwitcherSettings::Trigger::Command));
#else
    trigger_->addItem(SwitcherModule::triggerName(SwitcherSettings::Trigger::Option), SwitcherSettings::name(SwitcherSettings::Trigger::Option));
    trigger_->addItem(SwitcherModule::triggerName(SwitcherSettings::Trigger::Command), SwitcherSettings::name(SwitcherSettings::Trigger::Command));
#endif
    connect(trigger_, &QComboBox::activated, this, [this](int index) {
        module_.settings().setTrigger(index == 1 ? SwitcherSettings::Trigger::Command : SwitcherSettings::Trigger::Option);
        refresh();
    });
    column->addLayout(labelled(tr("Open with"), trigger_, box));
    triggerNote_ = note(QString(), box);
    triggerNote_->setObjectName(QStringLiteral("triggerNote"));
    column->addWidget(triggerNote_);
    refused_ = new QLabel(box);
    refused_->setObjectName(QStringLiteral("triggerRefused"));
    refused_->setWordWrap(true);
    QPalette p = refused_->palette();
    p.setColor(QPalette::WindowText, QColor(0xC0, 0x39, 0x2B));
    refused_->setPalette(p);
    column->addWidget(refused_);
    taken_ = new TakenKeysBox(hotKeys, module_.id(), layout, box);
    connect(taken_, &TakenKeysBox::useFreeKeysClicked, this, [this] {
        if (const auto other = module_.freeTrigger()) module_.settings().setTrigger(*other);
        refresh();
    });
    column->addWidget(taken_);
    return box;
}

QWidget* SwitcherSettingsView::windowsSection()
{
    SwitcherSettings& settings = module_.settings();
    auto* box = new QGroupBox(tr("Windows"), this);
    auto* column = new QVBoxLayout(box);
    minimized_ = new ToggleSwitch(box);
    minimized_->setObjectName(QStringLiteral("includeMinimized"));
    connect(minimized_, &ToggleSwitch::toggled, this, [&settings](bool on) { settings.setIncludeMinimized(on); });
    column->addLayout(labelled(tr("Include minimized windows"), minimized_, box));
    layout_ = new QComboBox(box);
    layout_->setObjectName(QStringLiteral("layout"));
    layout_->addItem(tr("List"), SwitcherSettings::name(SwitcherSettings::Layout::List));
    layout_->addItem(tr("Grid"), SwitcherSettings::name(SwitcherSettings::Layout::Grid));
    connect(layout_, &QComboBox::activated, this, [&settings](int index) {
        settings.setLayout(index == 1 ? SwitcherSettings::Layout::Grid : SwitcherSettings::Layout::List);
    });
    column->addLayout(labelled(tr("Layout"), layout_, box));
#ifdef Q_OS_MACOS
    column->addWidget(note(tr("Shows the windows of the current Space, most recently used first."), box));
#else
    column->addWidget(note(tr("Shows the windows of the current desktop, most recently used first."), box));
#endif
    return box;
}

QWidget* SwitcherSettingsView::tabsSection()
{
    BrowserTabs& tabs = module_.browserTabs();
    auto* box = new QGroupBox(tr("Browser tabs"), this);
    auto* column = new QVBoxLayout(box);
    tabs_ = new ToggleSwitch(box);
    tabs_->setObjectName(QStringLiteral("browserTabs"));
    tabs_->setEnabled(tabs.isAvailable());
    connect(tabs_, &ToggleSwitch::toggled, this, [this](bool on) { module_.settings().setBrowserTabs(on); });
    column->addLayout(labelled(tr("Include Safari and Chrome-family tabs"), tabs_, box));
    if (!tabs.isAvailable()) {
        auto* unavailable = note(tr("Browser tabs are not available on this system."), box);
        unavailable->setObjectName(QStringLiteral("tabsUnavailable"));
        column->addWidget(unavailable);
        return box;
    }
    column->addWidget(note(tr("Orlo asks each running browser for its tabs, which needs the Automation permission. macOS asks "
                              "the first time; you can change it in System Settings › Privacy & Security › Automation."),
                           box));
    auto* deniedRow = new QHBoxLayout;
    denied_ = new QLabel(box);
    denied_->setObjectName(QStringLiteral("tabsDenied"));
    denied_->setWordWrap(true);
    openAutomation_ = new QPushButton(tr("Open Automation Settings…"), box);
    connect(openAutomation_, &QPushButton::clicked, this, [] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_Automation")));
    });
    deniedRow->addWidget(denied_, 1);
    deniedRow->addWidget(openAutomation_);
    column->addLayout(deniedRow);
    return box;
}

QWidget* SwitcherSettingsView::excludedSection()
{
    auto* editor = new AppListEditor(tr("Excluded apps"), tr("Exclude"), workspace_, this);
    editor->setEmptyText(tr("No apps excluded."));
    QStringList ids = module_.settings().excluded();
    ids.sort();
    QList<AppListEditor::App> apps;
    for (const QString& id : std::as_const(ids)) apps.append({id, {}});
    editor->setApps(apps);
    connect(editor, &AppListEditor::appsChanged, this, [this](const QList<AppListEditor::App>& apps) {
        QStringList ids;
        for (const AppListEditor::App& app : apps) ids << app.id;
        module_.settings().setExcluded(ids);
    });
    return editor;
}

void SwitcherSettingsView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // The user may come here having just freed the trigger in the window manager's settings.
    module_.retryRefusedTrigger();
}

void SwitcherSettingsView::refresh()
{
    SwitcherSettings& settings = module_.settings();
    const SwitcherSettings::Trigger trigger = settings.trigger();
    trigger_->setCurrentIndex(trigger == SwitcherSettings::Trigger::Command ? 1 : 0);
#ifdef Q_OS_MACOS
    const QString replaces = tr("Replaces the macOS app switcher while Orlo runs.");
#else
    const QString replaces = tr("Orlo cannot switch off the window manager's own Super-Tab: if the window manager "
                                "keeps it, free Super-Tab in its keyboard settings; Orlo then takes it.");
#endif
    triggerNote_->setText(trigger == SwitcherSettings::Trigger::Command
                              ? replaces
                              : tr("Hold the modifier, press ⇥ to step forward and ⇧⇥ to step back, release to switch. "
                                   "Type to search, ⎋ to cancel."));
    // Where the compositor binds keys only in its own configuration, the lines below say it all.
    refused_->setVisible(module_.isTriggerRefused() && hotKeys_.bindingsFile().isEmpty());
    QString refused = tr("%1 is taken by another program, usually the window manager.").arg(SwitcherModule::triggerName(trigger));
    if (const QString place = module_.triggerSwitchOffPlace(); !place.isEmpty())
        refused += QLatin1Char(' ') + tr("Orlo leaves it alone: to open the switcher with it, remove it from %1.").arg(place);
    refused_->setText(refused);
    const auto other = module_.freeTrigger();
    taken_->setFreeKeys(other ? SwitcherModule::triggerName(*other) : QString());
    minimized_->show(settings.includeMinimized());
    layout_->setCurrentIndex(settings.layout() == SwitcherSettings::Layout::Grid ? 1 : 0);
    tabs_->show(settings.browserTabs() && module_.browserTabs().isAvailable());
    if (denied_) {
        QStringList names = module_.browserTabs().denied().values();
        names.sort();
        const bool any = !names.isEmpty();
        denied_->setText(tr("Access denied by ") + names.join(QStringLiteral(", ")));
        denied_->setVisible(any);
        openAutomation_->setVisible(any);
    }
}

}  // namespace orlo
