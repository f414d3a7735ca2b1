#pragma once
#include <QObject>
#include <QString>
#include <optional>

namespace orlo {

// Keeps the system from acting on its own while an assertion is held: from blanking, locking
// or suspending for idleness, or from acting on the power, suspend and hibernate keys. Asking
// never waits for another process; the system drops a process's assertions when the process
// ends, however it ends.
class PowerAssertion : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Nothing when the system offers no way at all.
    virtual std::optional<quint32> preventDisplaySleep(const QString& name) = 0;
    virtual std::optional<quint32> preventPowerKeys(const QString& name) = 0;
    // Also for an assertion whose answers have not all come yet.
    virtual void release(quint32 assertion) = 0;

signals:
    // Every part of the system asked for the assertion has since answered with a refusal.
    void refused(quint32 assertion);
};

}  // namespace orlo
