// The sandbox id read from a process's cgroup file.
#include "platform/linux/SandboxedApp.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString id = orlo::sandboxedAppId(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    // An id names a desktop file: never a path.
    if (id.contains(QLatin1Char('/'))) __builtin_trap();
    return 0;
}
