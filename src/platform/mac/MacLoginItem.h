#pragma once
#include "platform/LoginItem.h"

namespace orlo::mac {

// Orlo.app as the login item of the ServiceManagement framework (SMAppService.mainAppService).
class MacLoginItem : public LoginItem {
public:
    LoginItemStatus status() override;
    bool registerItem() override;
    bool unregisterItem() override;
};

}  // namespace orlo::mac
