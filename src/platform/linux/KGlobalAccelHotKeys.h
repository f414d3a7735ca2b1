#pragma once
#include "platform/HotKeyService.h"
#include <QDBusConnection>
#include <QHash>

namespace orlo {

class KeyboardLayout;

// Hot keys through KDE's global shortcuts service (org.kde.kglobalaccel), where Plasma lists
// them under System Settings › Shortcuts beside every other application's. Each hot key is
// an action of Orlo's component named after its keys, so it keeps its name from one start to
// the next. A combination another component holds is refused. Orlo's actions go again when
// their hot keys are unregistered and when Orlo stops; the start removes those that an Orlo
// which did not stop in order left behind, so no key stays taken by a dead program.
class KGlobalAccelHotKeys : public HotKeyService {
    Q_OBJECT
public:
    // Whether the service is on the bus.
    static bool offeredOn(const QDBusConnection& bus);
    KGlobalAccelHotKeys(const QDBusConnection& bus, KeyboardLayout& layout, QObject* parent = nullptr);
    ~KGlobalAccelHotKeys() override;

    bool registerHotKey(quint32 id, quint32 keyCode, quint32 carbonModifiers) override;
    void unregisterHotKey(quint32 id) override;
    bool isHeldByAnotherApp(quint32 keyCode, quint32 carbonModifiers) override;

    // The action under which a hot key is registered, for System Settings and for tests.
    static QString actionName(int qtKeys);
    QString component() const { return component_; }

private slots:
    void onPressed(const QString& component, const QString& action, qlonglong timestamp);

private:
    QStringList actionId(const QString& action) const;
    void removeAction(const QString& action);
    void removeLeftovers();

    QDBusConnection bus_;
    KeyboardLayout& layout_;
    QString component_;
    QHash<quint32, QString> actions_;  // hot key id -> action name
};

}  // namespace orlo
