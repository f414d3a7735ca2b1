#include "system/SystemModule.h"
#include "platform/Platform.h"
#include "system/DiskCleaner.h"
#include "system/DisplayDimmer.h"
#include "system/KeyboardCleaner.h"
#include "system/SleepGuard.h"
#include "system/SystemAlert.h"
#include "system/SystemMonitor.h"
#include "system/SystemPanelRows.h"
#include "system/SystemSettingsPage.h"

namespace orlo {

SystemModule::SystemModule(OrloContext& context, QObject* parent)
    : OrloModule(context.defaults, parent), context_(context), alert_(std::make_unique<SystemAlert>())
{
    Platform& platform = context.platform;
    monitor_ = std::make_unique<SystemMonitor>(*platform.processes, *platform.workspace);
    diskCleaner_ = std::make_unique<DiskCleaner>(*platform.userFiles);
    dimmer_ = std::make_unique<DisplayDimmer>(*platform.gamma, context.defaults);
    keyboardCleaner_ = std::make_unique<KeyboardCleaner>(*platform.eventTaps, *platform.power, *platform.screens,
                                                         context.permissions, *alert_);
    sleepGuard_ = std::make_unique<SleepGuard>(*platform.power);
    // Orlo may end without stopping its modules: nothing of the screen, the keyboard or the
    // power settings may outlive it.
    connect(&context.events, &AppEvents::willTerminate, this, &SystemModule::finish);
}

SystemModule::~SystemModule() { finish(); }

void SystemModule::start()
{
    if (running_) return;
    running_ = true;
    monitor_->start();
    dimmer_->start();
    emit runningChanged(true);
}

void SystemModule::stop()
{
    if (!running_) return;
    running_ = false;
    monitor_->pause();
    dimmer_->stop();
    keyboardCleaner_->end();
    emit runningChanged(false);
}

void SystemModule::finish()
{
    keyboardCleaner_->end();
    sleepGuard_->setOn(false);
    if (dimmer_->isActive() || dimmer_->holdsSavedTables()) dimmer_->restoreForExit();
}

QWidget* SystemModule::settingsView() { return new SystemSettingsPage(*this); }

QWidget* SystemModule::panelRows() { return new SystemPanelRows(*this); }

}  // namespace orlo
