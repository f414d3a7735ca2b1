#pragma once
#include "platform/EdgeTiling.h"

namespace orlo::mac {

// macOS tiles windows dragged to a screen edge from macOS 15 on. Whether the user switched it
// off is kept in no documented place, so from 15 on the setting is always named.
class MacEdgeTiling : public EdgeTiling {
public:
    QString switchOffPlace() override;
};

}  // namespace orlo::mac
