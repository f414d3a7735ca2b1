#pragma once

namespace orlo {

enum class LoginItemStatus { NotRegistered, Enabled, RequiresApproval, NotFound };

// Starting Orlo when the user logs in.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    virtual LoginItemStatus status() = 0;
    virtual bool registerItem() = 0;
    virtual bool unregisterItem() = 0;
};

}  // namespace orlo
