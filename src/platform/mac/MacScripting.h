#pragma once
#include "platform/Scripting.h"

namespace orlo::mac {

// AppleScript programs run with NSAppleScript; other applications answer them only once the
// user allowed Orlo to automate them (Privacy & Security › Automation).
class MacScripting : public Scripting {
public:
    bool isAvailable() const override { return true; }
    Result run(const QString& source) override;
};

}  // namespace orlo::mac
