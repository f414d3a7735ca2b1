#include "windows/WindowsModule.h"
#include "app/PlaceholderPage.h"

namespace orlo {

WindowsModule::WindowsModule(OrloContext& context, QObject* parent) : OrloModule(context.defaults, parent), context_(context) {}

void WindowsModule::start() {}

void WindowsModule::stop() {}

QWidget* WindowsModule::settingsView() { return placeholderPage(); }

}  // namespace orlo
