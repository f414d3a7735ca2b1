#include "windows/WindowsSettingsView.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include "input/TakenKeysBox.h"
#include "platform/KeyboardLayout.h"
#include "windows/SnapSettings.h"
#include "windows/SnapShortcutButton.h"
#include "windows/WindowsModule.h"
#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace orlo {

namespace {
constexpr int maxGap = 40;

QLabel* note(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    QPalette p = label->palette();
    p.setColor(QPalette::WindowText, p.color(QPalette::PlaceholderText));
    label->setPalette(p);
    return label;
}
}  // namespace

WindowsSettingsView::WindowsSettingsView(WindowsModule& module, HotKeys& hotKeys, KeyboardLayout& layout, QWidget* parent)
    : QWidget(parent), module_(module), layout_(layout),
      capture_(layout, [this](const KeyEvent& key) {
          if (!module_.settings().recordKey(key.keyCode, key.flags)) QApplication::beep();
      })
{
    setObjectName(QStringLiteral("WindowsSettings"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 8, 16);
    column->addWidget(shortcutsSection(hotKeys));
    column->addWidget(gapSection());
    column->addWidget(dragSection());
    column->addWidget(gridSection());
    column->addWidget(presetsSection());
    column->addStretch(1);
    connect(&module_.settings(), &SnapSettings::recordingChanged, this, &WindowsSettingsView::recordingChanged);
}

QWidget* WindowsSettingsView::shortcutsSection(HotKeys& hotKeys)
{
    SnapSettings& settings = module_.settings();
    auto* box = new QGroupBox(tr("Keyboard Shortcuts"), this);
    auto* column = new QVBoxLayout(box);
    auto* taken = new TakenKeysBox(hotKeys, module_.id(), layout_, box);
    auto showFreeKeys = [this, taken] { taken->setFreeKeys(module_.freeKeysDescription()); };
    showFreeKeys();
    connect(&module_, &WindowsModule::hotKeysChanged, taken, showFreeKeys);
    connect(taken, &TakenKeysBox::useFreeKeysClicked, &module_, &WindowsModule::useFreeKeys);
    column->addWidget(taken);
    column->addWidget(note(tr("Give several areas the same shortcut to cycle through them by pressing it again. "
                              "Click a shortcut and type a new one; Esc cancels, Delete clears."),
                           box));
    auto* grid = new QGridLayout;
    grid->setColumnStretch(0, 1);
    int row = 0;
    for (SnapAction action : SnapAction::all()) {
        auto* title = new QLabel(action.title(), box);
        auto* button = new SnapShortcutButton(settings, action, layout_, box);
        button->setObjectName(QStringLiteral("shortcut.") + action.key());
        auto* refused = new QLabel(box);
        refused->setObjectName(QStringLiteral("refused.") + action.key());
        refused->setText(tr("In use by another app"));
        refused->setToolTip(tr("The system refused this shortcut, so it does nothing: another application already "
                               "uses it. Choose another one."));
        QPalette p = refused->palette();
        p.setColor(QPalette::WindowText, QColor(0xC0, 0x39, 0x2B));
        refused->setPalette(p);
        auto* icon = new QLabel(box);
        icon->setPixmap(symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"), 14, QColor(0xC0, 0x39, 0x2B)));
        grid->addWidget(title, row, 0);
        grid->addWidget(icon, row, 1);
        grid->addWidget(refused, row, 2);
        grid->addWidget(button, row, 3);
        auto refresh = [this, &settings, action, icon, refused] {
            const auto shortcut = settings.shortcut(action);
            const bool show = module_.isRunning() && shortcut && module_.isRefused(*shortcut);
            icon->setVisible(show);
            refused->setVisible(show);
        };
        refresh();
        connect(&module_, &WindowsModule::hotKeysChanged, refused, refresh);
        connect(&settings, &SnapSettings::shortcutsChanged, refused, refresh);
        ++row;
    }
    column->addLayout(grid);
    auto* restore = new QPushButton(tr("Restore Defaults"), box);
    restore->setObjectName(QStringLiteral("restoreDefaults"));
    connect(restore, &QPushButton::clicked, this, [&settings] {
        settings.endRecording();
        settings.restoreDefaultShortcuts();
    });
    auto* restoreRow = new QHBoxLayout;
    restoreRow->addStretch(1);
    restoreRow->addWidget(restore);
    column->addLayout(restoreRow);
    return box;
}

QWidget* WindowsSettingsView::gapSection()
{
    SnapSettings& settings = module_.settings();
    auto* box = new QGroupBox(tr("Gap"), this);
    auto* row = new QHBoxLayout(box);
    auto* label = new QLabel(tr("Space between windows"), box);
    auto* slider = new QSlider(Qt::Horizontal, box);
    slider->setObjectName(QStringLiteral("gap"));
    slider->setAccessibleName(label->text());
    slider->setRange(0, maxGap);
    slider->setSingleStep(1);
    slider->setPageStep(1);
    slider->setValue(int(std::lround(std::min(settings.gap(), double(maxGap)))));
    auto* value = new QLabel(box);
    value->setMinimumWidth(40);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto show = [value](double gap) { value->setText(tr("%1 pt").arg(gap)); };
    show(settings.gap());
    row->addWidget(label);
    row->addWidget(slider, 1);
    row->addWidget(value);
    connect(slider, &QSlider::valueChanged, this, [&settings](int v) { settings.setGap(v); });
    connect(&settings, &SnapSettings::gapChanged, value, show);
    return box;
}

QWidget* WindowsSettingsView::dragSection()
{
    SnapSettings& settings = module_.settings();
    auto* box = new QGroupBox(tr("Drag to Snap"), this);
    auto* column = new QVBoxLayout(box);
    auto* row = new QHBoxLayout;
    auto* label = new QLabel(tr("Drag a window by its title bar to a screen edge or corner to snap it."), box);
    label->setWordWrap(true);
    auto* toggle = new ToggleSwitch(box);
    toggle->setObjectName(QStringLiteral("dragToSnap"));
    toggle->setAccessibleName(label->text());
    toggle->show(settings.dragToSnap());
    row->addWidget(label, 1);
    row->addWidget(toggle);
    column->addLayout(row);
    const QString advice = module_.edgeTilingAdvice();
    QLabel* tiling = note(!module_.canDragToSnap() ? tr("Orlo cannot follow the pointer over other programs' windows on this "
                                                        "desktop, so a window dragged to a screen edge is left to the "
                                                        "desktop's own tiling.")
                          : advice.isEmpty()       ? tr("Turn off your window manager's own edge tiling so that both do not act at once.")
                                                   : advice,
                          box);
    toggle->setEnabled(module_.canDragToSnap());
    tiling->setObjectName(QStringLiteral("edgeTilingNote"));
    column->addWidget(tiling);
    connect(toggle, &ToggleSwitch::toggled, this, [&settings](bool on) { settings.setDragToSnap(on); });
    connect(&settings, &SnapSettings::dragToSnapChanged, toggle, [toggle](bool on) { toggle->show(on); });
    return box;
}

QWidget* WindowsSettingsView::gridSection()
{
    SnapSettings& settings = module_.settings();
    auto* box = new QGroupBox(SnapAction(SnapAction::autoLayout).title(), this);
    auto* row = new QHBoxLayout(box);
    auto* label = new QLabel(tr("Arranges"), box);
    auto* scope = new QComboBox(box);
    scope->setObjectName(QStringLiteral("gridScope"));
    scope->addItem(tr("Windows of the frontmost app"));
    scope->addItem(tr("Windows of all apps"));
    scope->setCurrentIndex(settings.autoLayoutAllApps() ? 1 : 0);
    row->addWidget(label);
    row->addWidget(scope, 1);
    connect(scope, &QComboBox::currentIndexChanged, this, [&settings](int i) { settings.setAutoLayoutAllApps(i == 1); });
    return box;
}

QWidget* WindowsSettingsView::presetsSection()
{
    SnapSettings& settings = module_.settings();
    auto* box = new QGroupBox(tr("Cycling"), this);
    auto* column = new QVBoxLayout(box);
    column->addWidget(note(tr("What the left and right half shortcuts cycle through on each kind of screen."), box));
    auto* grid = new QGridLayout;
    grid->setColumnStretch(0, 1);
    int row = 0;
    for (SnapScreenKind kind : SnapScreenKind::all()) {
        auto* combo = new QComboBox(box);
        combo->setObjectName(QStringLiteral("preset.") + kind.rawValue());
        for (SnapAreaSet preset : SnapAreaSet::all()) combo->addItem(preset.title());
        combo->setCurrentIndex(int(SnapAreaSet::Value(settings.rule(kind))));
        grid->addWidget(new QLabel(kind.title(), box), row, 0);
        grid->addWidget(combo, row, 1);
        connect(combo, &QComboBox::currentIndexChanged, this, [&settings, kind](int i) {
            if (i >= 0 && i < SnapAreaSet::count) settings.setRule(kind, SnapAreaSet::all()[i]);
        });
        ++row;
    }
    column->addLayout(grid);
    return box;
}

void WindowsSettingsView::recordingChanged()
{
    // While a shortcut is recorded, every key press in Orlo goes to it.
    capture_.setActive(module_.settings().recording().has_value());
}

void WindowsSettingsView::hideEvent(QHideEvent* event)
{
    module_.settings().endRecording();
    QWidget::hideEvent(event);
}

}  // namespace orlo
