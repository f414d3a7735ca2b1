#pragma once
#include "system/AppUsage.h"
#include "system/ProcessSampler.h"
#include <QHash>
#include <QIcon>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace orlo {

class ProcessTable;
class Workspace;

// Schedules the process sampler on its own thread and keeps what the views show: the
// current figures, the applications and five minutes of history.
class SystemMonitor : public QObject {
    Q_OBJECT
public:
    enum class SortKey { Cpu, Memory };
    static constexpr int TickMs = 1000;
    static constexpr int WatchedIntervalMs = 1750;
    static constexpr int UnwatchedIntervalMs = 9750;
    static constexpr int HistorySeconds = 300;
    static constexpr int TopPerSample = 5;
    // How long a process has to end after Quit or Force Quit before Orlo says it did not.
    static constexpr int QuitGraceMs = 3000;

    SystemMonitor(ProcessTable& processes, Workspace& workspace, QObject* parent = nullptr);
    ~SystemMonitor() override;

    double cpu() const { return cpu_; }
    // The processors the CPU figures share out: 100 % is all of them busy.
    int processors() const { return processors_; }
    quint64 memoryUsed() const { return memoryUsed_; }
    quint64 memoryTotal() const { return memoryTotal_; }
    int pressure() const { return pressure_; }
    const QList<AppUsage>& apps() const { return apps_; }
    const QList<UsageSample>& history() const { return history_; }
    bool hasSample() const { return hasSample_; }
    bool isScheduled() const { return timer_.isActive(); }
    bool inFlight() const { return inFlight_; }
    int viewers() const { return viewers_; }

    // Samples at once and then on the timer; does nothing when already scheduled.
    void start();
    // The module is off: no more samples; the last values stay.
    void pause();
    // A view that shows the monitor appeared or went away: sampling is faster while one shows.
    void addViewer();
    void removeViewer();

    void tick();
    void sampleNow();
    void apply(const ProcessSampler::Result& result);
    QList<AppUsage> sorted(SortKey key) const;

    // Quits an application or process; a plain quit lets it close its windows its own way.
    // Returns a note for the user when the application may ask before it ends, or when it
    // could not be asked; quitFailed() follows when it is still running a while later.
    // A process that has ended is never signalled, even when its pid is another's now.
    QString quit(const AppUsage& app, bool force);
    QIcon icon(const AppUsage& app);

    // Milliseconds since the epoch; tests move time by hand.
    std::function<qint64()> clock;
    int quitGraceMs = QuitGraceMs;

signals:
    void changed();
    // One line for the user: a process asked to quit is still running.
    void quitFailed(const QString& note);

private:
    QList<ProcessSampler::RunningApp> runningApps();

    ProcessTable& processes_;
    Workspace& workspace_;
    double cpu_ = 0;
    int processors_ = 1;
    quint64 memoryUsed_ = 0;
    quint64 memoryTotal_ = 0;
    int pressure_ = 1;
    QList<AppUsage> apps_;
    QList<UsageSample> history_;
    bool hasSample_ = false;
    std::unique_ptr<ProcessSampler> sampler_;  // touched only on the sampler thread
    QThreadPool queue_;
    QTimer timer_;
    int viewers_ = 0;
    std::optional<qint64> lastSample_;
    bool inFlight_ = false;
    QHash<qint64, QString> bundleIds_;
    QHash<QString, QIcon> icons_;
};

}  // namespace orlo
