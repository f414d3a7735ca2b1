#pragma once
#include <QByteArray>
#include <QString>

namespace orlo {

// The desktop-file id of the sandboxed application a process belongs to, read from its
// /proc/<pid>/cgroup: Flatpak starts each app in "app-flatpak-<app id>-<n>.scope", snapd in
// "snap.<snap>.<app>-<uuid>.scope", whose desktop file is "<snap>_<app>". Empty for a
// process outside any sandbox.
QString sandboxedAppId(const QByteArray& cgroupFile);

}  // namespace orlo
