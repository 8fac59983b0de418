// The world that the calls of this process answer from.
#pragma once

#include "simulator/world/world.h"

namespace ovno2::simulator {

// Begun at the first call: phones from OVNO2_PHONES or the folder "phones" beside the library, the plan from
// OVNO2_SIMULATOR_PLAN, the journal to OVNO2_JOURNAL.
World& theWorld();

}  // namespace ovno2::simulator
