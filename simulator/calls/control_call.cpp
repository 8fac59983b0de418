// The way in for tests: JSON commands, one exported C function (simulator/control/control.h is the
// comfortable side of it).
#include "simulator/calls/exports.h"
#include "simulator/calls/the_world.h"
#include "simulator/commands/control_commands.h"

using namespace ovno2::simulator;

namespace {

thread_local std::string lastAnswer;

}  // namespace

// A command and its answer as UTF-8 JSON. The answer belongs to the library and is valid until the thread's
// next command.
SIMULATOR_EXPORT const char* SimulatorControl(const char* command) {
    World& world = theWorld();
    const std::lock_guard guard(world.lock);
    lastAnswer = answerTo(world, command == nullptr ? "" : command);
    return lastAnswer.c_str();
}
