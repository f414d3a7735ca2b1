#include "kit/OrloModule.h"
#include "kit/Defaults.h"

namespace orlo {

OrloModule::OrloModule(Defaults& defaults, QObject* parent) : QObject(parent), defaults_(defaults) {}

bool OrloModule::isEnabled() const { return defaults_.boolValue(id() + ".enabled").value_or(true); }

void OrloModule::setEnabled(bool enabled) { defaults_.set(id() + ".enabled", enabled); }

}  // namespace orlo
