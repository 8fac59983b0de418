// What an executable file says about its version.
//
// Keeps no state; the runtime discovery calls it. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::GetFileInfo_ {

// "major.minor.build.revision" of the file version, or of the product version where that is preferred and
// says more than its major number; each part of it that is 0 comes from the file version. Empty for a missing
// file or one without version data.
Text FileVersionText(TextView path, bool preferProductVersion);

}  // namespace ovno2::GetFileInfo_
