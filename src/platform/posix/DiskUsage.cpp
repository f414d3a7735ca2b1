#include "platform/posix/DiskUsage.h"
#include <QFile>
#include <fts.h>
#include <sys/stat.h>

namespace orlo {

quint64 diskUsage(const QString& path, const std::atomic_bool& cancelled)
{
    QByteArray native = QFile::encodeName(path);
    char* roots[] = {native.data(), nullptr};
    FTS* walk = fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR | FTS_XDEV, nullptr);
    if (!walk) return 0;
    quint64 total = 0;
    while (const FTSENT* entry = fts_read(walk)) {
        if (cancelled) break;
        if (entry->fts_info == FTS_DP || !entry->fts_statp) continue;
        if (entry->fts_info == FTS_NS || entry->fts_info == FTS_ERR || entry->fts_info == FTS_DNR) continue;
        total += quint64(entry->fts_statp->st_blocks) * 512;
    }
    fts_close(walk);
    return total;
}

}  // namespace orlo
