#pragma once
#include "platform/WindowCatalog.h"
#include "switcher/SwitchItem.h"
#include <QHash>
#include <QList>
#include <QSet>

namespace orlo {

class Workspace;

// The windows the user can switch to right now, on the current desktop, front to back:
// the window server's on-screen list joined with each application's own window list,
// followed by the minimized windows.
class WindowList {
public:
    // Windows smaller than this are not worth switching to (tool strips, invisible helpers).
    static constexpr double MinWidth = 60, MinHeight = 40;

    WindowList(WindowCatalog& catalog, Workspace& workspace) : catalog_(catalog), workspace_(workspace) {}

    // appOrder: process ids, most recently active first. excluded: bundle identifiers.
    QList<SwitchItem> current(bool includeMinimized, const QSet<QString>& excluded, const QList<qint64>& appOrder);
    // The application's icon, looked up once per application.
    QIcon icon(const QString& bundleId);

private:
    QList<RunningApp> eligibleApplications(const QSet<QString>& excluded, const QList<qint64>& appOrder);

    WindowCatalog& catalog_;
    Workspace& workspace_;
    QHash<QString, QIcon> icons_;
};

}  // namespace orlo
