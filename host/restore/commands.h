// The command that puts back on a phone what was saved.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerRestore(CLI::App& app, Context& context);

}  // namespace ovno2::host
