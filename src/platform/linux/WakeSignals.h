#pragma once
#include <QObject>
#include <QStringList>
#include <QVariantMap>

class QDBusPendingCallWatcher;

namespace orlo {

// Tells when the screens come back and their gamma may have been reset: the machine resumed
// from sleep (logind's PrepareForSleep), this login session became the active one again (a
// return from another virtual terminal), or the desktop's screen saver ended. Nothing here
// waits for a reply; without a system or session bus nothing is heard.
class WakeSignals : public QObject {
    Q_OBJECT
public:
    explicit WakeSignals(QObject* parent = nullptr);

signals:
    void woke();

private slots:
    void onPrepareForSleep(bool sleeping);
    void onSessionPropertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);
    void onScreenSaverActiveChanged(bool active);

private:
    void watchOwnSession();
    void onOwnSession(QDBusPendingCallWatcher* call);
};

}  // namespace orlo
