// What was handed out and has not come back. No state: everything is counted where it lives.
#pragma once

#include "simulator/images/json_writer.h"
#include "simulator/world/world.h"

namespace ovno2::simulator {

// Members of the answer: {"handedOut": {KIND: n}, "open": {KIND: n}, "started": {GROUP: n}, "closedInside":
// n, "misuse": [TEXT]}; kinds and groups that stand at 0 are left out, so that a module that has let go of
// everything leaves three empty objects.
void writeBalance(JsonWriter& answer, const World& world);

}  // namespace ovno2::simulator
