#pragma once
#include <QWidget>

namespace orlo {

class AppModel;
class OrloModule;

// The top of a module's settings page: symbol, title, summary and the enable switch.
class ModuleHeader : public QWidget {
    Q_OBJECT
public:
    ModuleHeader(AppModel& model, OrloModule& module, QWidget* parent = nullptr);
};

}  // namespace orlo
