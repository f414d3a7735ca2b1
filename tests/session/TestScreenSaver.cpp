// orlo-test-screensaver: a desktop's screen saver service on the session bus, for session
// tests. It prints "ready" once it owns org.freedesktop.ScreenSaver, "inhibit <application>
// <reason> <cookie>" and "uninhibit <cookie>" for each call, and "lost <cookie>" when the
// caller holding an inhibition leaves the bus.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QHash>
#include <cstdio>

class ScreenSaver : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    ScreenSaver()
    {
        watcher_.setConnection(QDBusConnection::sessionBus());
        watcher_.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& name) {
            for (auto it = holders_.begin(); it != holders_.end();) {
                if (it.value() == name) {
                    say(QStringLiteral("lost %1").arg(it.key()));
                    it = holders_.erase(it);
                } else {
                    ++it;
                }
            }
        });
    }

public slots:
    uint Inhibit(const QString& application, const QString& reason)
    {
        const uint cookie = next_++;
        holders_.insert(cookie, message().service());
        watcher_.addWatchedService(message().service());
        say(QStringLiteral("inhibit %1 %2 %3").arg(application, reason).arg(cookie));
        return cookie;
    }
    void UnInhibit(uint cookie)
    {
        holders_.remove(cookie);
        say(QStringLiteral("uninhibit %1").arg(cookie));
    }

private:
    static void say(const QString& line)
    {
        printf("%s\n", qPrintable(line));
        fflush(stdout);
    }
    QDBusServiceWatcher watcher_;
    QHash<uint, QString> holders_;
    uint next_ = 41;
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    ScreenSaver service;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), &service, QDBusConnection::ExportAllSlots)
        || !bus.registerService(QStringLiteral("org.freedesktop.ScreenSaver"))) {
        fprintf(stderr, "the screen saver service could not be registered\n");
        return 1;
    }
    printf("ready\n");
    fflush(stdout);
    return app.exec();
}

#include "TestScreenSaver.moc"
