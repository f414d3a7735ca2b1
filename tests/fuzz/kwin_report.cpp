// What Orlo's script inside KWin reports over the session bus, where any program may call.
#include "platform/wayland/kwin/KWinDesktop.h"
#include "platform/wayland/kwin/KWinReport.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto report = orlo::kwin::parseKWinReport(QByteArrayView(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!report) return 0;
    for (const auto& w : report->windows)
        if (w.id.isEmpty() || !(w.frame.width() > 0) || !(w.frame.height() > 0)) __builtin_trap();
    for (const auto& s : report->screens)
        if (!s.frame.contains(s.workArea)) __builtin_trap();
    // Every window the report names can be ordered and found by its number.
    orlo::kwin::KWinDesktop desktop([](const QJsonObject&) {});
    desktop.apply(std::move(*report));
    for (const auto* w : desktop.byRecency())
        if (desktop.window(desktop.idOf(*w)) != w) __builtin_trap();
    return 0;
}
