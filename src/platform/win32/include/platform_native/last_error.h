// The error value that the platform keeps for the last call into a library.
//
// Out of line, because the platform's own headers rename members of the core.
#pragma once

#include "base/types.h"

namespace ovno2::platform {

void clearLastError();
Long lastError();

}  // namespace ovno2::platform
