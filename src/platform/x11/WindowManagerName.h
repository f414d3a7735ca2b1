#pragma once
#include <QByteArray>

namespace orlo::x11 {

class XConnection;

// The name the running EWMH window manager gives itself ("KWin", "Mutter", ...); empty
// without one.
QByteArray windowManagerName(XConnection& x);

}  // namespace orlo::x11
