// The commands on messages and notes.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerMessages(CLI::App& app, Context& context);
void registerNotes(CLI::App& app, Context& context);

}  // namespace ovno2::host
