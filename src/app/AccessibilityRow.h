#pragma once
#include <QWidget>

namespace orlo {

class Permissions;

// The warning shown while Orlo lacks the Accessibility permission, with "Allow".
class AccessibilityRow : public QWidget {
    Q_OBJECT
public:
    explicit AccessibilityRow(Permissions& permissions, QWidget* parent = nullptr);
};

}  // namespace orlo
