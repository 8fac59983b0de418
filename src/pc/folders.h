// Where the platform keeps the user's and the system's folders.
//
// Keeps no state; the discovery and contact reading call it. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::Folders {

// The special folder of the platform's number `id` (38 = program files, 26 = application data ...), from the
// platform, else from the registry's list of shell folders. Empty when neither knows it; otherwise it ends
// in "\" when `addSeparator` is set.
Text GetSpecialFolder_(Long id, bool addSeparator);

// The system temporary folder, ending in "\".
Text GetTemporaryFolder();

}  // namespace ovno2::Folders
