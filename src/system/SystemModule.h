#pragma once
#include "kit/OrloContext.h"
#include "kit/OrloModule.h"
#include <memory>

namespace orlo {

class DiskCleaner;
class DisplayDimmer;
class KeyboardCleaner;
class SleepGuard;
class SystemAlert;
class SystemMonitor;

// The system tools: usage per application, disk cleanup, display dimming, keyboard
// cleaning and the switch that keeps the display awake.
class SystemModule : public OrloModule {
    Q_OBJECT
public:
    explicit SystemModule(OrloContext& context, QObject* parent = nullptr);
    ~SystemModule() override;

    QString id() const override { return QStringLiteral("system"); }
    QString title() const override { return tr("System Monitoring"); }
    QString symbol() const override { return QStringLiteral("gauge.with.dots.needle.33percent"); }
    QString summary() const override { return tr("Usage per app, disk cleanup, display dimming and keyboard cleaning."); }
    bool needsAccessibility() const override { return false; }
    void start() override;
    void stop() override;
    QWidget* settingsView() override;
    QWidget* panelRows() override;

    bool isRunning() const { return running_; }
    SystemMonitor& monitor() { return *monitor_; }
    DiskCleaner& diskCleaner() { return *diskCleaner_; }
    DisplayDimmer& dimmer() { return *dimmer_; }
    KeyboardCleaner& keyboardCleaner() { return *keyboardCleaner_; }
    SleepGuard& sleepGuard() { return *sleepGuard_; }

signals:
    void runningChanged(bool running);

private:
    void finish();

    OrloContext& context_;
    std::unique_ptr<SystemAlert> alert_;
    std::unique_ptr<SystemMonitor> monitor_;
    std::unique_ptr<DiskCleaner> diskCleaner_;
    std::unique_ptr<DisplayDimmer> dimmer_;
    std::unique_ptr<KeyboardCleaner> keyboardCleaner_;
    std::unique_ptr<SleepGuard> sleepGuard_;
    bool running_ = false;
};

}  // namespace orlo
