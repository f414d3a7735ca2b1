#pragma once
#include <QWidget>

namespace orlo {

class AppModel;

// The "General" page: "Startup" with "Open at login", and "Permissions".
class GeneralSettings : public QWidget {
    Q_OBJECT
public:
    explicit GeneralSettings(AppModel& model, QWidget* parent = nullptr);
};

}  // namespace orlo
