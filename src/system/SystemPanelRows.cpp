#include "system/SystemPanelRows.h"
#include "kit/ToggleSwitch.h"
#include "system/DimmingSlider.h"
#include "system/DisplayDimmer.h"
#include "system/KeyboardCleaner.h"
#include "system/SleepGuard.h"
#include "system/SystemModule.h"
#include "system/SystemLog.h"
#include "system/SystemMonitor.h"
#include "system/UsageRings.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

namespace orlo {

SystemPanelRows::SystemPanelRows(SystemModule& module, QWidget* parent) : QWidget(parent), module_(module)
{
    setObjectName(QStringLiteral("systemRows"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    rings_ = new UsageRings(module_.monitor(), this);
    column->addWidget(rings_);

    brightness_ = new QWidget(this);
    brightnessRow_ = new QVBoxLayout(brightness_);
    brightnessRow_->setContentsMargins(0, 0, 0, 0);
    brightnessRow_->setSpacing(2);
    brightnessRow_->addWidget(new QLabel(tr("Display Brightness"), brightness_));
    column->addWidget(brightness_);

    cleaning_ = switchRow(column, tr("Keyboard Cleaning"), QStringLiteral("keyboardCleaning"));
    preventSleep_ = switchRow(column, tr("Prevent Sleep"), QStringLiteral("preventSleep"));

    KeyboardCleaner& cleaner = module_.keyboardCleaner();
    connect(cleaning_, &ToggleSwitch::toggled, this, [this, &cleaner](bool on) {
        if (on) {
            // The lock's overlays cover the screen: the panel steps aside first.
            if (QWidget* panel = window(); panel != this) panel->hide();
            cleaner.beginWithPrompt();
        } else {
            cleaner.end();
        }
        refresh();
    });
    connect(&cleaner, &KeyboardCleaner::activeChanged, this, &SystemPanelRows::refresh);
    SleepGuard& guard = module_.sleepGuard();
    connect(preventSleep_, &ToggleSwitch::toggled, &guard, &SleepGuard::setOn);
    connect(&guard, &SleepGuard::isOnChanged, this, &SystemPanelRows::refresh);
    connect(&module_, &SystemModule::runningChanged, this, &SystemPanelRows::refresh);
    connect(&module_.dimmer(), &DisplayDimmer::displaysChanged, this, &SystemPanelRows::rebuildBrightness);
    rebuildBrightness();
    refresh();
}

SystemPanelRows::~SystemPanelRows()
{
    if (viewing_) module_.monitor().removeViewer();
}

ToggleSwitch* SystemPanelRows::switchRow(QVBoxLayout* column, const QString& title, const QString& name)
{
    auto* row = new QHBoxLayout;
    auto* toggle = new ToggleSwitch(this);
    toggle->setObjectName(name);
    toggle->setAccessibleName(title);
    row->addWidget(new QLabel(title, this), 1);
    row->addWidget(toggle);
    column->addLayout(row);
    return toggle;
}

void SystemPanelRows::rebuildBrightness()
{
    delete brightnessSlider_;
    brightnessSlider_ = nullptr;
    if (const auto main = module_.dimmer().main()) {
        brightnessSlider_ = new DimmingSlider(module_.dimmer(), *main, brightness_);
        brightnessRow_->addWidget(brightnessSlider_);
    }
}

void SystemPanelRows::refresh()
{
    const bool running = module_.isRunning();
    rings_->setVisible(running);
    brightness_->setVisible(running && module_.dimmer().main().has_value());
    cleaning_->show(module_.keyboardCleaner().isActive());
    preventSleep_->show(module_.sleepGuard().isOn());
    // Rows shown or hidden while the panel is closed change the panel's size too.
    updateGeometry();
}

void SystemPanelRows::showEvent(QShowEvent* event)
{
    if (!viewing_) module_.monitor().addViewer();
    viewing_ = true;
    QWidget::showEvent(event);
    if (lcSystem().isDebugEnabled())
        QTimer::singleShot(100, this, [this] {
            for (QWidget* row : {static_cast<QWidget*>(cleaning_), static_cast<QWidget*>(preventSleep_)}) {
                const QPoint at = row->mapToGlobal(row->rect().center());
                qCDebug(lcSystem, "panel switch %s at %d,%d", qPrintable(row->objectName()), at.x(), at.y());
            }
        });
}

void SystemPanelRows::hideEvent(QHideEvent* event)
{
    if (viewing_) module_.monitor().removeViewer();
    viewing_ = false;
    QWidget::hideEvent(event);
}

}  // namespace orlo
