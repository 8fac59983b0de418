// The commands that save a whole phone, and say whether what they have saved is still whole.
#pragma once

#include "host/command/command.h"

namespace ovno2::host {

void registerArchive(CLI::App& app, Context& context);
void registerVerify(CLI::App& app, Context& context);

}  // namespace ovno2::host
