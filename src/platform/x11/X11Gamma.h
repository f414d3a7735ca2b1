#pragma once
#include "platform/Gamma.h"
#include "platform/linux/GammaRecoveryFile.h"
#include "platform/linux/WakeSignals.h"
#include "platform/x11/X11GammaWriter.h"
#include <QHash>
#include <QTimer>
#include <xcb/randr.h>

namespace orlo::x11 {

class XConnection;

// Gamma through RandR: a display is a CRTC that drives a connected output; its name and key
// come from the output's EDID. Every change goes to a recovery file before the CRTC, and a
// new X11Gamma undoes what a previous Orlo left dimmed before anyone reads a table.
class X11Gamma : public Gamma {
    Q_OBJECT
public:
    X11Gamma(XConnection& x, const QString& recoveryPath, QObject* parent = nullptr);
    ~X11Gamma() override;

    QList<GammaDisplay> displays() override;
    int capacity(quint32 display) override;
    std::optional<GammaTables> read(quint32 display) override;
    bool set(const GammaDisplay& display, const GammaTables& tables, const GammaTables& original) override;
    void forget(const GammaDisplay& display) override;

private:
    void recover(const GammaRecoveryFile& file);
    void watchScreenSaver();
    std::optional<GammaTables> readCrtc(quint32 crtc);

    XConnection& x_;
    QHash<QString, GammaRecoveryFile::Change> changes_;  // by display key
    std::unique_ptr<X11GammaWriter> writer_;
    WakeSignals wake_;
    int listener_;
    QTimer settle_;
};

}  // namespace orlo::x11
