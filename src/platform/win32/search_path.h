// Where programs and libraries named without a path are looked for: the host's folder, the system's, PATH.
// Never in the current folder, where anybody may have put something.
#pragma once

#include "base/types.h"

namespace ovno2::platform::win32 {

bool isBareName(TextView name);

// The full path of the file; `extension` is added to a name without one. Empty when there is none.
Text findNamed(TextView name, const wchar_t* extension);

}  // namespace ovno2::platform::win32
