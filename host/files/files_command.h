// `ovphone files`: browses the files of the chosen phone, copies and changes them.
#pragma once

#include "host/command_line.h"

namespace ovno2::host {

// Throws CommandFailure; what could be done is done and written then.
void runFilesCommand(const Options& options);

}  // namespace ovno2::host
