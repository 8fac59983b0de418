// The commands of the control interface: what tests and plan files ask of the world.
//
// docs/simulator.md describes them. Runs with the world's lock held; no state of its own.
#pragma once

#include <string>
#include <string_view>

#include "simulator/images/json_node.h"
#include "simulator/world/world.h"

namespace ovno2::simulator {

// Carries out {"command": NAME, ...}. The answer is an object as JSON text. A command that cannot be
// understood is an exception.
std::string runCommand(World& world, const JsonNode& command);

// The same from text. {"error": TEXT} for a command that cannot be understood.
std::string answerTo(World& world, std::string_view command);

}  // namespace ovno2::simulator
