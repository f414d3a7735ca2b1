// The file that lets Orlo undo the gamma of a display after a crash: whatever it holds, the
// changes that load save and load again unchanged.
#include "FuzzInput.h"
#include "platform/linux/GammaRecoveryFile.h"

using orlo::fuzz::require;
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = orlo::fuzz::fileHolding(orlo::fuzz::bytes(data, size), "dimmed-displays.json");
    const orlo::GammaRecoveryFile file(path, QStringLiteral(":0"));
    const auto changes = file.load();
    for (const auto& change : changes) {
        require(!change.original.red.isEmpty(), "a change loads with the display's own tables");
        require(!change.key.isEmpty() || change.displayId, "a change names its display");
    }
    file.save(changes);
    require(file.load() == changes, "the changes Orlo saves load as the same changes");
    file.remove();
    return 0;
}
