#include "system/SystemModule.h"
#include "app/PlaceholderPage.h"

namespace orlo {

SystemModule::SystemModule(OrloContext& context, QObject* parent) : OrloModule(context.defaults, parent), context_(context) {}

void SystemModule::start() {}

void SystemModule::stop() {}

QWidget* SystemModule::settingsView() { return placeholderPage(); }

}  // namespace orlo
