// The commands about the phones themselves and what is installed to reach them.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerList(CLI::App& app, Context& context);
void registerDoctor(CLI::App& app, Context& context);
void registerMedia(CLI::App& app, Context& context);

}  // namespace ovno2::host
