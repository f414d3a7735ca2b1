#pragma once
#include <QString>
#include <atomic>

namespace orlo {

// Bytes on disk under a path (the blocks its files take), not following symbolic links nor
// crossing onto other file systems; stops early when cancelled.
quint64 diskUsage(const QString& path, const std::atomic_bool& cancelled);

}  // namespace orlo
