// The commands on the module's diagnostic log.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerLog(CLI::App& app, Context& context);

}  // namespace ovno2::host
