#pragma once
#include <QString>

namespace orlo {

// The system tools' messages to the user. Views show them as dialogs; tests record them.
class SystemAlert {
public:
    virtual ~SystemAlert() = default;
    // An informational note with one button.
    virtual void inform(const QString& title, const QString& message);
    // An informational question; true when the user chose the first button.
    virtual bool ask(const QString& title, const QString& message, const QString& accept, const QString& cancel);
};

}  // namespace orlo
