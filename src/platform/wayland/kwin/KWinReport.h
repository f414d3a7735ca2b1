#pragma once
#include <QByteArrayView>
#include <QList>
#include <QRectF>
#include <QString>
#include <optional>

namespace orlo::kwin {

// One window as Orlo's script inside KWin describes it. Rectangles are in KWin's
// coordinates: top-left origin, logical pixels.
struct KWinWindow {
    QString id;  // KWin's internal id, stable while the window lives
    QString title;
    QString resourceClass;
    QString desktopFile;  // the desktop-file name the window gave KWin, may be empty
    qint64 pid = 0;
    bool minimized = false;
    bool fullScreen = false;
    bool normal = false;
    bool dialog = false;
    bool skipTaskbar = false;
    bool onCurrentDesktop = true;
    int screen = -1;
    QRectF frame;
};

struct KWinScreen {
    QString name;
    QRectF frame;
    QRectF workArea;  // without panels
};

// All the script knows at one moment.
struct KWinReport {
    QString active;             // id of the active window, empty when none is
    QList<QString> recent;      // ids, most recently active first
    QList<KWinWindow> windows;  // bottom of the stack first
    QList<KWinScreen> screens;  // KWin's first screen first
};

// Reads what the script sent. Anything on the session bus may call Orlo's object, so the
// text is taken as untrusted: nothing when it is not a report at all; fields of the wrong
// kind count as missing, and a window without an id or a size, or a screen without a size,
// is left out.
std::optional<KWinReport> parseKWinReport(QByteArrayView json);

}  // namespace orlo::kwin
