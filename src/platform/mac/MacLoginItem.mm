#include "platform/mac/MacLoginItem.h"
#import <ServiceManagement/ServiceManagement.h>

// No Core Foundation object is created here.
namespace orlo::mac {

LoginItemStatus MacLoginItem::status()
{
    switch (SMAppService.mainAppService.status) {
    case SMAppServiceStatusEnabled: return LoginItemStatus::Enabled;
    case SMAppServiceStatusRequiresApproval: return LoginItemStatus::RequiresApproval;
    case SMAppServiceStatusNotFound: return LoginItemStatus::NotFound;
    case SMAppServiceStatusNotRegistered: break;
    }
    return LoginItemStatus::NotRegistered;
}

// A refusal (the user must approve it in System Settings › General › Login Items) is told by
// the status read afterwards, not by the error.
bool MacLoginItem::registerItem() { return [SMAppService.mainAppService registerAndReturnError:nil]; }

bool MacLoginItem::unregisterItem() { return [SMAppService.mainAppService unregisterAndReturnError:nil]; }

}  // namespace orlo::mac
