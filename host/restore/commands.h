// The commands that put back on a phone what was saved, and that carry one phone's contents to another.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerRestore(CLI::App& app, Context& context);
void registerCopy(CLI::App& app, Context& context);

}  // namespace ovno2::host
