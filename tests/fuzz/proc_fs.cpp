// The texts of /proc that the process list and the system monitor read. Each parser gets the
// whole input, the stat line as the fixed buffer it is read into.
#include "FuzzInput.h"
#include "platform/linux/ProcFsFolderUsers.h"
#include "platform/linux/ProcFsProcessTable.h"
#include <cstring>

using orlo::ProcFsProcessTable;
using orlo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = orlo::fuzz::bytes(data, size);
    (void)ProcFsProcessTable::launchUnit(text);
    (void)ProcFsProcessTable::owner(text);
    (void)ProcFsProcessTable::pressureLevel(text);
    for (const QByteArray& line : text.split('\n'))
        if (const QByteArray file = orlo::ProcFsFolderUsers::mappedFile(line); !file.isEmpty())
            require(file.startsWith('/') && line.contains(file), "a mapped file is a path from the line");
    if (const auto ticks = ProcFsProcessTable::cpuTicks(text)) require(ticks->processors >= 1, "at least one processor");
    if (const auto memory = ProcFsProcessTable::memory(text)) require(memory->used <= memory->total, "no more memory used than there is");

    char stat[1024];
    const size_t length = std::min(size, sizeof stat - 1);
    std::memcpy(stat, data, length);
    stat[length] = '\0';
    if (const auto fields = ProcFsProcessTable::stat(stat, qsizetype(length)))
        require(fields->comm.data() > stat && fields->comm.data() + fields->comm.size() < stat + length, "the name lies within the line");
    return 0;
}
