#pragma once
#include "platform/Gamma.h"
#include "platform/linux/GammaRecoveryFile.h"
#include <QHash>
#include <QTimer>
#include <xcb/randr.h>

namespace orlo::x11 {

class XConnection;

// Gamma through RandR: a display is a CRTC that drives a connected output; its name and key
// come from the output's EDID. Every change is written to a recovery file first, and a new
// X11Gamma undoes what a previous Orlo left dimmed before anyone reads a table.
class X11Gamma : public Gamma {
    Q_OBJECT
public:
    X11Gamma(XConnection& x, const QString& recoveryPath, QObject* parent = nullptr);
    ~X11Gamma() override;

    QList<GammaDisplay> displays() override;
    int capacity(quint32 display) override;
    std::optional<GammaTables> read(quint32 display) override;
    bool set(quint32 display, const GammaTables& tables) override;
    void restoreAll() override;

private:
    void recover();
    bool write(quint32 crtc, const GammaTables& tables);

    XConnection& x_;
    GammaRecoveryFile recovery_;
    QHash<quint32, GammaRecoveryFile::Change> changes_;
    int listener_;
    QTimer settle_;
};

}  // namespace orlo::x11
