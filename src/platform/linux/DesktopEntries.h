#pragma once
#include "platform/Workspace.h"
#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>

namespace orlo {

// The installed applications' desktop entries, by which a window's application gets a
// stable identity (the desktop-file id, e.g. "org.gnome.TextEditor"), a display name in the
// user's language and an icon. GIO reads the entries, so escapes, localized names, Hidden,
// TryExec and OnlyShowIn mean what they mean everywhere else on the desktop.
class DesktopEntries {
public:
    struct Entry {
        QString id;
        QString name;
        QString icon;  // a theme icon name or an absolute path; empty when there is none
    };
    // dataDirs: the XDG data folders, most important first; empty means the environment's.
    explicit DesktopEntries(QStringList dataDirs = {});
    // The entry for the first of these window hints that names one (an application id, a
    // sandbox's id, the WM_CLASS class, its instance).
    const Entry* find(const QStringList& hints);
    // The entry with this desktop-file id.
    const Entry* byId(const QString& id);
    // The entry of a desktop file anywhere; nothing when it is not an application entry
    // that applies here.
    static std::optional<Entry> read(const QString& path, const QString& id);
    // The application a desktop file stands for (pid 0), as the user picks one in a folder.
    static std::optional<AppInfo> applicationAt(const QString& path);
    // The system's folder of application entries, where most applications are, rather than
    // the user's own; the home folder when there is none.
    static QString applicationsFolder();

private:
    void load();

    QStringList dataDirs_;
    bool loaded_ = false;
    QHash<QString, Entry> byId_;
    QHash<QString, Entry> byKey_;  // lower-case file id, StartupWMClass, last id part, program
};

}  // namespace orlo
