// The commands on a phone's files.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerFiles(CLI::App& app, Context& context);

}  // namespace ovno2::host
