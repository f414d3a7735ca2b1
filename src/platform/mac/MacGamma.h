#pragma once
#include "platform/Gamma.h"
#include <memory>

namespace orlo::mac {

// Displays' transfer tables through Quartz Display Services; restoring is the system's own
// CGDisplayRestoreColorSyncSettings, which puts every display back on its ColorSync profile.
class MacGamma : public Gamma {
    Q_OBJECT
public:
    explicit MacGamma(QObject* parent = nullptr);
    ~MacGamma() override;

    QList<GammaDisplay> displays() override;
    int capacity(quint32 display) override;
    std::optional<GammaTables> read(quint32 display) override;
    bool set(quint32 display, const GammaTables& tables) override;
    void restoreAll() override;

private:
    struct Observers;
    std::unique_ptr<Observers> observers_;
};

}  // namespace orlo::mac
