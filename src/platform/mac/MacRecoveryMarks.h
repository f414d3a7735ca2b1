#pragma once
#include <QString>

namespace orlo::mac {

// Marks of changes Orlo made to the system that must not outlive it (dimmed displays, the
// system's switcher keys switched off), kept where a later start finds them when Orlo was
// killed or crashed before it could undo the change. They live in a defaults domain of
// their own, beside Orlo's settings and never replaced with them.
namespace recovery {
bool isMarked(const QString& change);
void mark(const QString& change, bool on);
}  // namespace recovery

}  // namespace orlo::mac
