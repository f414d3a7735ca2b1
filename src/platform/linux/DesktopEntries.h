#pragma once
#include <QHash>
#include <QString>
#include <QStringList>

namespace orlo {

// The installed applications' desktop files, by which a window's application gets a stable
// identity (the desktop-file id, e.g. "org.gnome.TextEditor") and a display name.
class DesktopEntries {
public:
    struct Entry {
        QString id;
        QString name;
    };
    // dataDirs: the XDG data folders, most important first; empty means the environment's.
    explicit DesktopEntries(QStringList dataDirs = {});
    // The entry for any of these window hints (application id, WM_CLASS class, instance).
    const Entry* find(const QStringList& hints);

private:
    void load();

    QStringList dataDirs_;
    bool loaded_ = false;
    QHash<QString, Entry> byKey_;  // lower-case file id and StartupWMClass
};

}  // namespace orlo
