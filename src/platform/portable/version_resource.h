// The version of a Windows executable, read from the file itself.
#pragma once

#include "platform/files.h"
#include "platform/processes.h"

namespace ovno2::platform::portable {

// Finds the fixed version record in the resources of a 32- or 64-bit executable or library. False, with
// `version` untouched, when the file is none, has no such record or is damaged; no offset or count in it is
// trusted.
bool readVersionResource(OpenFile& file, FileVersion& version);

}  // namespace ovno2::platform::portable
