#pragma once
#include <optional>

namespace orlo {

// A boolean GSettings key; nothing when its schema is not installed.
std::optional<bool> gsettingsFlag(const char* schema, const char* key);

}  // namespace orlo
