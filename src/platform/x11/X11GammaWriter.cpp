#include "platform/x11/X11GammaWriter.h"
#include <xcb/randr.h>
#include <cstdlib>
#include <vector>

namespace orlo::x11 {

X11GammaWriter::X11GammaWriter(xcb_connection_t* c, const GammaRecoveryFile& file)
    : c_(c), file_(file), thread_([this] { run(); })
{
}

X11GammaWriter::~X11GammaWriter()
{
    {
        const std::lock_guard hold(lock_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

std::optional<GammaTables> X11GammaWriter::pending(quint32 crtc) const
{
    const std::lock_guard hold(lock_);
    const auto it = pending_.constFind(crtc);
    if (it == pending_.constEnd()) return std::nullopt;
    return *it;
}

void X11GammaWriter::write(quint32 crtc, const GammaTables& tables, const QList<GammaRecoveryFile::Change>& changes)
{
    {
        const std::lock_guard hold(lock_);
        pending_.insert(crtc, tables);
        unsaved_ = changes;
    }
    wake_.notify_one();
}

void X11GammaWriter::save(const QList<GammaRecoveryFile::Change>& changes)
{
    {
        const std::lock_guard hold(lock_);
        unsaved_ = changes;
    }
    wake_.notify_one();
}

void X11GammaWriter::run()
{
    std::unique_lock hold(lock_);
    for (;;) {
        wake_.wait(hold, [this] { return stopping_ || unsaved_ || !pending_.isEmpty(); });
        if (!unsaved_ && pending_.isEmpty()) return;
        const auto changes = std::exchange(unsaved_, std::nullopt);
        const QHash<quint32, GammaTables> batch = pending_;
        hold.unlock();
        if (changes) file_.save(*changes);
        for (auto it = batch.cbegin(); it != batch.cend(); ++it) writeNow(c_, it.key(), it.value());
        hold.lock();
        // Tables queued again meanwhile stay for the next round.
        for (auto it = batch.cbegin(); it != batch.cend(); ++it)
            if (pending_.value(it.key()) == it.value()) pending_.remove(it.key());
    }
}

bool X11GammaWriter::writeNow(xcb_connection_t* c, quint32 crtc, const GammaTables& tables)
{
    const int size = int(tables.red.size());
    if (!size || tables.green.size() != size || tables.blue.size() != size) return false;
    auto words = [](const QVector<float>& t) {
        std::vector<quint16> w(t.size());
        for (qsizetype i = 0; i < t.size(); ++i) w[i] = quint16(qBound(0.0f, t[i], 1.0f) * 65535.0f + 0.5f);
        return w;
    };
    const auto r = words(tables.red), g = words(tables.green), b = words(tables.blue);
    xcb_generic_error_t* error =
        xcb_request_check(c, xcb_randr_set_crtc_gamma_checked(c, crtc, quint16(size), r.data(), g.data(), b.data()));
    free(error);
    return !error;
}

}  // namespace orlo::x11
