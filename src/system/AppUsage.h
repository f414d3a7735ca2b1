#pragma once
#include <QDateTime>
#include <QList>
#include <QString>

namespace orlo {

// One process inside an application's group.
struct ProcessUsage {
    qint64 pid = 0;
    QString name;
    QString path;
    double cpu = 0;  // percent of the whole machine, all processors together
    quint64 memory = 0;
    quint64 startTime = 0;  // with the pid, names the process (see ProcessRecord)
    bool operator==(const ProcessUsage&) const = default;
};

// An application with the processes that work for it, or a process that belongs to none.
struct AppUsage {
    qint64 pid = 0;
    QString name;
    QString path;
    bool isApp = false;
    double cpu = 0;  // percent of the whole machine
    quint64 memory = 0;
    QList<ProcessUsage> children;
    quint64 startTime = 0;

    QString id() const { return (isApp ? QStringLiteral("app-") : QStringLiteral("pid-")) + QString::number(pid); }
    bool operator==(const AppUsage&) const = default;
};

// One point of the history chart: the machine's CPU and the busiest applications then.
struct UsageSample {
    QDateTime date;
    double cpu = 0;
    QList<AppUsage> top;
};

}  // namespace orlo
