#pragma once
#include <QObject>
#include <optional>

namespace orlo {

class PowerAssertion;

// "Prevent Sleep": while on, one assertion keeps the display awake. A refused assertion
// turns the switch back off, also when the refusal comes later.
class SleepGuard : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isOn READ isOn WRITE setOn NOTIFY isOnChanged)
public:
    static inline const QString AssertionName = QStringLiteral("Orlo: Prevent Sleep");

    explicit SleepGuard(PowerAssertion& power, QObject* parent = nullptr);
    bool isOn() const { return on_; }
    void setOn(bool on);

signals:
    void isOnChanged(bool on);

private:
    PowerAssertion& power_;
    bool on_ = false;
    std::optional<quint32> assertion_;
};

}  // namespace orlo
