#pragma once
#include "platform/Scripting.h"

namespace orlo {

// Linux desktops have no common way to script other applications: browser tabs are not offered.
class NoScripting : public Scripting {
public:
    bool isAvailable() const override { return false; }
    Result run(const QString&) override { return Failure{-1}; }
};

}  // namespace orlo
