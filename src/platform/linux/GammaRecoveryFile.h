#pragma once
#include "platform/Gamma.h"
#include <QList>
#include <QString>

namespace orlo {

// While Orlo has changed a display's gamma, this small file holds the display's own tables
// and the ones Orlo set, so that the next start can undo a change that outlived a crash or
// a kill. Undoing only happens where the display still shows exactly what Orlo set.
class GammaRecoveryFile {
public:
    struct Change {
        QString key;            // the display's stable key; empty in files of earlier versions
        quint32 displayId = 0;  // where the display was shown when Orlo changed it
        GammaTables original;
        GammaTables applied;
        bool operator==(const Change&) const = default;
    };

    // The file for one X display, under the user's state folder.
    static QString defaultPath();
    GammaRecoveryFile(const QString& path, const QString& display);

    // The changes a previous run left behind on this X display.
    QList<Change> load() const;
    // Saves the changes, or removes the file when there are none.
    void save(const QList<Change>& changes) const;
    void remove() const;

private:
    QString path_;
    QString display_;
};

}  // namespace orlo
