#pragma once
#include <QDBusUnixFileDescriptor>
#include <QHash>
#include <QObject>
#include <QSet>

class QDBusPendingCallWatcher;

namespace orlo {

// logind's inhibitor locks on the system bus ("idle", "handle-power-key", ...): logind holds
// back what a lock names for as long as Orlo keeps the file descriptor it answered with. The
// descriptor closes with the process, so a lock never outlives Orlo.
class LogindInhibitor : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Asks for a lock on `what` (names joined by ':'); the answer comes through answered().
    quint32 inhibit(const QString& what, const QString& why);
    // Also for a lock still waiting for its answer, which is then dropped on arrival.
    void release(quint32 lock);
    bool holds(quint32 lock) const { return held_.contains(lock); }

signals:
    void answered(quint32 lock, bool granted);

private:
    void onAnswer(quint32 lock, QDBusPendingCallWatcher* call);

    quint32 next_ = 1;
    QSet<quint32> waiting_;
    QHash<quint32, QDBusUnixFileDescriptor> held_;
};

}  // namespace orlo
