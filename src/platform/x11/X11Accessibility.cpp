#include "platform/x11/X11Accessibility.h"
#include "platform/x11/XConnection.h"
#include <QMessageBox>

namespace orlo::x11 {

X11Accessibility::X11Accessibility(XConnection& x) : x_(x), xtest_(x.hasExtension("XTEST")) {}

bool X11Accessibility::isTrusted() { return xtest_ && windowManagerRuns(); }

bool X11Accessibility::windowManagerRuns()
{
    const xcb_atom_t check = x_.atom("_NET_SUPPORTING_WM_CHECK");
    const auto child = x_.cardinal(x_.root(), check, XCB_ATOM_WINDOW);
    // A leftover property from a window manager that has gone points at a dead window.
    return child && *child && x_.cardinal(*child, check, XCB_ATOM_WINDOW) == child;
}

void X11Accessibility::openSettings()
{
    QString missing;
    if (!xtest_) missing += QObject::tr("• The X server does not offer the XTEST extension, which Orlo needs to paste and to switch windows.\n");
    if (!windowManagerRuns()) missing += QObject::tr("• No window manager that follows the EWMH standard is running, so Orlo cannot move or switch windows.\n");
    QMessageBox box(QMessageBox::Information, QObject::tr("Allow Accessibility"),
                    QObject::tr("Orlo cannot yet move, switch and paste on this desktop.\n\n%1\n"
                                "Orlo notices within two seconds when this changes.").arg(missing));
    box.exec();
}

}  // namespace orlo::x11
