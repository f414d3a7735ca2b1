#pragma once
#include <QString>

namespace orlo {

// One tab of a browser window, as the browser's own scripting names it.
struct BrowserTab {
    QString bundleID;
    qint64 windowID = 0;  // the browser's scripting id of the window, not a window-server number
    qint64 index = 0;     // 1-based position in the window
    QString title;

    bool operator==(const BrowserTab&) const = default;
};

}  // namespace orlo
