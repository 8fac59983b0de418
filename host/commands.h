// What `ovphone` does: finds the connectivity library, opens the driver, runs one command, writes its result
// to standard output and everything else to standard error.
#pragma once

#include "host/command_line.h"

namespace ovno2::host {

// Returns the exit status.
int runCommand(const Options& options);

}  // namespace ovno2::host
