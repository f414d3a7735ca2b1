#pragma once
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QStringList>

class QProcess;

namespace orlo::testing {

class VirtualSession;

// logind as Orlo sees it on the system bus, played on a private bus of the session that
// Orlo is told is the system bus: inhibitor locks (whose release it notices when Orlo closes
// the descriptor, also by dying), the caller's session, and the signals of sleep and of a
// session that becomes active again.
class FakeLogind : public QObject {
    Q_OBJECT
public:
    static inline const QString SessionPath = QStringLiteral("/org/freedesktop/login1/session/_31");

    // Starts the bus in the session and sets DBUS_SYSTEM_BUS_ADDRESS for what it starts next.
    explicit FakeLogind(VirtualSession& session);
    ~FakeLogind() override;
    bool isRegistered() const { return registered_; }

    // "inhibit <what> <mode>", "release <what>" and "session asked", in order.
    QStringList events;
    bool holds(const QString& what) const;

    void resumeFromSleep();
    void activateSession();

private:
    friend class FakeLogindManager;
    QDBusUnixFileDescriptor inhibit(const QString& what, const QString& mode);

    QString address_;
    QDBusConnection bus_;
    bool registered_ = false;
    QStringList held_;
};

class FakeLogindManager : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    explicit FakeLogindManager(FakeLogind* logind) : QDBusAbstractAdaptor(logind), logind_(logind) {}

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString&, const QString&, const QString& mode)
    {
        return logind_->inhibit(what, mode);
    }
    QDBusObjectPath GetSessionByPID(uint) { return session(); }
    QDBusObjectPath GetSession(const QString&) { return session(); }

signals:
    void PrepareForSleep(bool start);

private:
    QDBusObjectPath session()
    {
        logind_->events << QStringLiteral("session asked");
        return QDBusObjectPath(FakeLogind::SessionPath);
    }
    FakeLogind* logind_;
};

}  // namespace orlo::testing
