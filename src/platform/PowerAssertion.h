#pragma once
#include <QString>
#include <optional>

namespace orlo {

// Keeps the display awake while an assertion is held. The system drops a process's
// assertions when the process ends.
class PowerAssertion {
public:
    virtual ~PowerAssertion() = default;
    // Nothing when the system refused.
    virtual std::optional<quint32> preventDisplaySleep(const QString& name) = 0;
    virtual void release(quint32 assertion) = 0;
};

}  // namespace orlo
