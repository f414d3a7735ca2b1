#include "clipboard/ClipboardModule.h"
#include "app/PlaceholderPage.h"

namespace orlo {

ClipboardModule::ClipboardModule(OrloContext& context, QObject* parent) : OrloModule(context.defaults, parent), context_(context) {}

void ClipboardModule::start() {}

void ClipboardModule::stop() {}

QWidget* ClipboardModule::settingsView() { return placeholderPage(); }

}  // namespace orlo
