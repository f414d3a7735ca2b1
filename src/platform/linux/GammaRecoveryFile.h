#pragma once
#include "platform/Gamma.h"
#include <QHash>
#include <QString>

namespace orlo {

// While Orlo has changed a display's gamma, this small file holds the display's own tables
// and the ones Orlo set, so that the next start can undo a change that outlived a crash or
// a kill. Undoing only happens where the display still shows exactly what Orlo set.
class GammaRecoveryFile {
public:
    struct Change {
        GammaTables original;
        GammaTables applied;
    };

    // The file for one X display, under the user's state folder.
    static QString defaultPath();
    GammaRecoveryFile(const QString& path, const QString& display);

    // The changes a previous run left behind on this display, by display id.
    QHash<quint32, Change> load() const;
    void save(const QHash<quint32, Change>& changes) const;
    void remove() const;

private:
    QString path_;
    QString display_;
};

}  // namespace orlo
