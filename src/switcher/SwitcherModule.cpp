#include "switcher/SwitcherModule.h"
#include "app/PlaceholderPage.h"

namespace orlo {

SwitcherModule::SwitcherModule(OrloContext& context, QObject* parent) : OrloModule(context.defaults, parent), context_(context) {}

void SwitcherModule::start() {}

void SwitcherModule::stop() {}

QWidget* SwitcherModule::settingsView() { return placeholderPage(); }

}  // namespace orlo
