#pragma once
#include "platform/Gamma.h"
#include "platform/linux/GammaRecoveryFile.h"
#include <QHash>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <xcb/xcb.h>

namespace orlo::x11 {

// Writes gamma tables on a thread of its own, the recovery file first and then the CRTC, so
// that a crash between the two still finds the change in the file and neither the disk nor
// the X server holds up the caller. Tables that come faster than they can be written are
// merged: only the newest of each CRTC is written.
class X11GammaWriter {
public:
    X11GammaWriter(xcb_connection_t* c, const GammaRecoveryFile& file);
    // Carries out everything queued before it returns.
    ~X11GammaWriter();

    // The tables queued for a CRTC and not yet written.
    std::optional<GammaTables> pending(quint32 crtc) const;
    // Saves `changes` as the recovery file, then writes the tables.
    void write(quint32 crtc, const GammaTables& tables, const QList<GammaRecoveryFile::Change>& changes);
    void save(const QList<GammaRecoveryFile::Change>& changes);

    static bool writeNow(xcb_connection_t* c, quint32 crtc, const GammaTables& tables);

private:
    void run();

    xcb_connection_t* c_;
    GammaRecoveryFile file_;
    mutable std::mutex lock_;
    std::condition_variable wake_;
    QHash<quint32, GammaTables> pending_;
    std::optional<QList<GammaRecoveryFile::Change>> unsaved_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace orlo::x11
