// `ovphone` without a command: the attached phones, and the phone book of the chosen one.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerOverview(CLI::App& app, Context& context);

}  // namespace ovno2::host
