#pragma once
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

class QDBusPendingCallWatcher;

namespace orlo {

// The session's screen saver service (org.freedesktop.ScreenSaver) over D-Bus: while an
// inhibition is held the desktop neither blanks nor locks the screen for idleness. The
// service drops Orlo's inhibitions when Orlo's bus connection closes. Nothing here waits
// for the service.
class ScreenSaverInhibitor : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Asks for an inhibition; the answer comes through answered().
    quint32 inhibit(const QString& reason);
    // Also for an inhibition still waiting for its answer, which is then ended on arrival.
    void release(quint32 inhibition);

signals:
    void answered(quint32 inhibition, bool granted);

private:
    void ask(quint32 inhibition, int pathIndex);
    void onAnswer(quint32 inhibition, int pathIndex, QDBusPendingCallWatcher* call);
    void uninhibit(int pathIndex, quint32 cookie);

    struct Cookie {
        int pathIndex;
        quint32 value;
    };
    quint32 next_ = 1;
    QHash<quint32, QString> waiting_;  // inhibition -> reason
    QHash<quint32, Cookie> held_;
};

}  // namespace orlo
