#pragma once
#include "platform/HotKeyService.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QMap>
#include <QTimer>

namespace orlo {

class KeyboardLayout;

// Hot keys through the desktop portal's global shortcuts, for desktops that offer no other
// way. The portal binds a whole set of shortcuts to a session at once, and binds a session
// only once: every change of Orlo's hot keys closes the session and binds the new set in a
// fresh one, a moment after the last change so that a module's keys go together. Each
// shortcut is named after its keys, so the portal keeps what the user decided for it from
// one start to the next. The portal may let the user choose other keys or none; a press
// arrives for whatever keys the user kept. Closing the session when Orlo stops (or the portal
// noticing that Orlo left the bus) frees every key.
class PortalHotKeys : public HotKeyService {
    Q_OBJECT
public:
    // Whether the portal on the bus offers global shortcuts (it answers for its version).
    static bool offeredOn(const QDBusConnection& bus);
    PortalHotKeys(const QDBusConnection& bus, KeyboardLayout& layout, QObject* parent = nullptr);
    ~PortalHotKeys() override;

    bool registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers) override;
    void unregisterHotKey(quint32 id) override;

    // The session the keys are bound in; empty while none is.
    QString session() const { return session_; }

signals:
    // The portal has bound the current set in session().
    void bound();

private slots:
    void onActivated(const QDBusMessage& signal);

private:
    void rebind();
    void bindIn(const QString& session, int generation);
    void closeSession(const QString& session);

    QDBusConnection bus_;
    KeyboardLayout& layout_;
    QMap<quint32, QString> shortcuts_;  // hot key id -> shortcut, by its keys ("CTRL+ALT+Left")
    QString session_;
    int generation_ = 0;  // answers to an earlier set are stale
    QTimer bindSoon_;
};

}  // namespace orlo
