#pragma once
#include "platform/Screens.h"

namespace orlo::x11 {

class XConnection;

// Screens from Qt's view of the RandR monitors, with RandR output ids as display ids.
class X11Screens : public Screens {
    Q_OBJECT
public:
    explicit X11Screens(XConnection& x, QObject* parent = nullptr);
    QList<ScreenInfo> screens() override;

    // Qt's desktop coordinates (top-left origin) to Orlo's y-up screen coordinates.
    static QRectF toScreenCoordinates(const QRect& desktopRect, const QRect& primary);

private:
    quint32 displayId(const QString& name);

    XConnection& x_;
};

}  // namespace orlo::x11
