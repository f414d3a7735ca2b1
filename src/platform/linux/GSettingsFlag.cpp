#include "platform/linux/GSettingsFlag.h"
#include <gio/gio.h>

namespace orlo {

std::optional<bool> gsettingsFlag(const char* schema, const char* key)
{
    // Looked up first: GSettings aborts the program on a schema or key it does not know.
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    GSettingsSchema* found = source ? g_settings_schema_source_lookup(source, schema, TRUE) : nullptr;
    if (!found) return std::nullopt;
    std::optional<bool> value;
    if (g_settings_schema_has_key(found, key)) {
        GSettings* settings = g_settings_new_full(found, nullptr, nullptr);
        value = g_settings_get_boolean(settings, key);
        g_object_unref(settings);
    }
    g_settings_schema_unref(found);
    return value;
}

}  // namespace orlo
