#pragma once
#include "platform/Gamma.h"

namespace orlo::wayland {

// Wayland compositors do not offer display colour tables to ordinary clients: no display can
// be dimmed, and Orlo changes nothing it would have to put back.
class NoGamma : public Gamma {
    Q_OBJECT
public:
    using Gamma::Gamma;
    QList<GammaDisplay> displays() override { return {}; }
    int capacity(quint32) override { return 0; }
    std::optional<GammaTables> read(quint32) override { return std::nullopt; }
    bool set(const GammaDisplay&, const GammaTables&, const GammaTables&) override { return false; }
    void forget(const GammaDisplay&) override {}
};

}  // namespace orlo::wayland
