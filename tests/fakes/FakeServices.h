#pragma once
// The fake platform with the application services a module is built from.
#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "kit/OrloContext.h"
#include "kit/Permissions.h"
#include "input/HotKeys.h"

namespace orlo::fakes {

struct FakeServices {
    FakePlatform platform;
    Defaults defaults{*platform.settings};
    Permissions permissions{*platform.accessibility};
    HotKeys hotKeys{*platform.hotKeys};
    AppEvents events;
    OrloContext context{platform, defaults, hotKeys, permissions, events};
};

}  // namespace orlo::fakes
