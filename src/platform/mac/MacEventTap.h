#pragma once
#include "platform/EventTapBackend.h"

namespace orlo::mac {

// Session keyboard taps (CGEventTapCreate). A Quartz tap sees every key of its event types,
// so the watched keys are only a hint and seeing all keys is always granted.
class MacEventTapBackend : public EventTapBackend {
public:
    std::unique_ptr<KeyTap> createTap(quint64 mask, Callback callback) override;
};

}  // namespace orlo::mac
