// The world that the calls of this process answer from.
#pragma once

#include "simulator/world/world.h"

namespace ovno2::simulator {

// Begun at the first call: phones from OVNO2_PHONES or the folder "phones" beside the library, the plan from
// OVNO2_SIMULATOR_PLAN, the journal to OVNO2_JOURNAL. What is wrong with them goes to standard error.
World& theWorld();

// Keeps a mistake that a call has met in an image, and tells the user on standard error unless he knows it.
void tell(World& world, const std::string& mistake);

}  // namespace ovno2::simulator
