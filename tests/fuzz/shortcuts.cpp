// Shortcuts as the settings keep them: the windows module's table of them and the clipboard's
// one. Whatever the stored data, the settings read, and a shortcut that reads writes out as
// data that reads back as the same shortcut.
#include "FuzzInput.h"
#include "clipboard/ClipboardSettings.h"
#include "kit/Defaults.h"
#include "windows/SnapSettings.h"

using orlo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray stored = orlo::fuzz::bytes(data, size);
    if (const auto shortcut = orlo::Shortcut::fromJson(stored))
        require(orlo::Shortcut::fromJson(shortcut->toJson()) == shortcut, "a shortcut reads back as written");

    orlo::fuzz::StoredSettings storage({{QStringLiteral("windows.shortcuts"), stored}, {QStringLiteral("clipboard.shortcut"), stored}});
    orlo::Defaults defaults(storage);
    (void)orlo::ClipboardSettings(defaults).shortcut();
    const auto read = orlo::SnapSettings(defaults).shortcuts();
    // Changing one writes them all; they read back as they were.
    orlo::SnapSettings settings(defaults);
    const auto first = orlo::SnapAction::all().first();
    settings.setShortcut(settings.shortcut(first), first);
    require(orlo::SnapSettings(defaults).shortcuts() == read, "the windows' shortcuts read back as written");
    return 0;
}
