// The commands of the control interface: what tests and plan files ask of the world.
//
// docs/simulator.md describes them. Runs with the world's lock held; no state of its own.
#pragma once

#include <nlohmann/json.hpp>

#include "simulator/world/world.h"

namespace ovno2::simulator {

// Carries out {"command": NAME, ...}. The answer is an object; {"error": TEXT} when the command cannot be
// understood.
nlohmann::json runCommand(World& world, const nlohmann::json& command);

}  // namespace ovno2::simulator
