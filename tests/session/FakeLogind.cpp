#include "FakeLogind.h"
#include "VirtualSession.h"
#include <QDBusMessage>
#include <QSocketNotifier>
#include <sys/socket.h>
#include <unistd.h>

namespace orlo::testing {

static QString startBus(VirtualSession& session)
{
    QProcess* bus = session.launch(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                                   QStringLiteral("--print-address=1")});
    QString address;
    VirtualSession::waitFor([&] {
        address += QString::fromLocal8Bit(bus->readAllStandardOutput());
        return address.contains(QLatin1Char('\n'));
    });
    return address.trimmed();
}

FakeLogind::FakeLogind(VirtualSession& session)
    : address_(startBus(session)), bus_(QDBusConnection::connectToBus(address_, QStringLiteral("fake-logind")))
{
    new FakeLogindManager(this);
    registered_ = bus_.isConnected() && bus_.registerObject(QStringLiteral("/org/freedesktop/login1"), this)
                  && bus_.registerService(QStringLiteral("org.freedesktop.login1"));
    session.setVariable(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), address_);
}

FakeLogind::~FakeLogind() { QDBusConnection::disconnectFromBus(QStringLiteral("fake-logind")); }

bool FakeLogind::holds(const QString& what) const { return held_.contains(what); }

// The caller keeps one end of a socket pair; logind's end reads end-of-file once every copy
// of the caller's end is closed.
QDBusUnixFileDescriptor FakeLogind::inhibit(const QString& what, const QString& mode)
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return {};
    events << QStringLiteral("inhibit %1 %2").arg(what, mode);
    held_ << what;
    auto* notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier, what, fd = ends[0]] {
        char byte;
        if (::read(fd, &byte, 1) > 0) return;
        events << QStringLiteral("release %1").arg(what);
        held_.removeOne(what);
        notifier->setEnabled(false);
        notifier->deleteLater();
        ::close(fd);
    });
    QDBusUnixFileDescriptor handed(ends[1]);  // a copy: ours closes now
    ::close(ends[1]);
    return handed;
}

void FakeLogind::resumeFromSleep()
{
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                     QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"));
    signal << false;
    bus_.send(signal);
}

void FakeLogind::activateSession()
{
    QDBusMessage signal = QDBusMessage::createSignal(SessionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("PropertiesChanged"));
    signal << QStringLiteral("org.freedesktop.login1.Session") << QVariantMap{{QStringLiteral("Active"), true}} << QStringList();
    bus_.send(signal);
}

}  // namespace orlo::testing
