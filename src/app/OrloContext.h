#pragma once

namespace orlo {

struct Platform;
class Defaults;
class HotKeys;
class Permissions;

// What every module is built from: the ports and the shared application services.
struct OrloContext {
    Platform& platform;
    Defaults& defaults;
    HotKeys& hotKeys;
    Permissions& permissions;
};

}  // namespace orlo
