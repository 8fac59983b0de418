// Ends a call of the library with a status.
#pragma once

#include "simulator/base/status.h"

namespace ovno2::simulator {

struct Refused {
    library::Status status;
};

}  // namespace ovno2::simulator
