// Where the file lies that holds this code: the DLL, or the program it is linked into.
#pragma once

#include "base/types.h"

namespace ovno2::platform::win32 {

Text modulePath();  // the full path

}  // namespace ovno2::platform::win32
