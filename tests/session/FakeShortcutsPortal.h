#pragma once
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

namespace orlo::testing {

// The desktop portal's global shortcuts as a program sees them on its session bus: sessions,
// each bound once to a set of shortcuts, answers on request objects, and presses. Every
// shortcut keeps the keys it asks for, unless the test has the user cancel.
class FakeShortcutsPortal : public QObject {
    Q_OBJECT
public:
    // One shortcut as a program hands it over: its id and its properties.
    struct Shortcut {
        QString id;
        QVariantMap properties;
    };

    explicit FakeShortcutsPortal(const QString& busAddress);
    ~FakeShortcutsPortal() override;
    bool isRegistered() const { return registered_; }

    // The sessions that are open, and the preferred keys each was bound to, in order.
    QHash<QString, QStringList> bound;
    QStringList closed;
    // The next binding is cancelled by the user.
    bool cancelNextBinding = false;

    void press(const QString& session, const QString& shortcut);

private:
    friend class FakeShortcutsAdaptor;
    friend class FakePortalSession;
    QDBusObjectPath createSession(const QVariantMap& options, const QDBusMessage& call);
    QDBusObjectPath bindShortcuts(const QDBusObjectPath& session, const QList<Shortcut>& shortcuts, const QVariantMap& options,
                                  const QDBusMessage& call);
    void close(const QString& session);
    // The request object of a call, and its answer sent once the call has returned.
    QDBusObjectPath answer(const QDBusMessage& call, const QVariantMap& options, uint response, const QVariantMap& results);

    QString name_;
    QDBusConnection bus_;
    bool registered_ = false;
};

class FakeShortcutsAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.GlobalShortcuts")
    Q_PROPERTY(uint version READ version)
public:
    explicit FakeShortcutsAdaptor(FakeShortcutsPortal* portal) : QDBusAbstractAdaptor(portal), portal_(portal) {}
    uint version() const { return 1; }

public slots:
    QDBusObjectPath CreateSession(const QVariantMap& options, const QDBusMessage& call)
    {
        return portal_->createSession(options, call);
    }
    QDBusObjectPath BindShortcuts(const QDBusObjectPath& session, const QList<orlo::testing::FakeShortcutsPortal::Shortcut>& shortcuts,
                                  const QString&, const QVariantMap& options, const QDBusMessage& call)
    {
        return portal_->bindShortcuts(session, shortcuts, options, call);
    }

signals:
    void Activated(const QDBusObjectPath& session_handle, const QString& shortcut_id, qulonglong timestamp, const QVariantMap& options);

private:
    FakeShortcutsPortal* portal_;
};

// A session object: the program closes it when it no longer wants its shortcuts.
class FakePortalSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Session")
public:
    FakePortalSession(FakeShortcutsPortal* portal, QString path) : QObject(portal), portal_(portal), path_(std::move(path)) {}
public slots:
    void Close() { portal_->close(path_); }

private:
    FakeShortcutsPortal* portal_;
    QString path_;
};

}  // namespace orlo::testing

Q_DECLARE_METATYPE(orlo::testing::FakeShortcutsPortal::Shortcut)
