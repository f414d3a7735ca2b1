#pragma once

namespace orlo {

// The one name the desktop knows Orlo by: its desktop entry, AppStream id, D-Bus name and
// icon names. Never change it: settings, autostart entries and key bindings refer to it.
inline constexpr char AppId[] = "app.orlo.Orlo";
// The release, as the build gives it.
inline constexpr char AppVersion[] = ORLO_VERSION;

}  // namespace orlo
