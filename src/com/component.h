// The COM object around the public class.
//
// The object belongs to the thread that made it.
#pragma once

#include "com/interface.h"

namespace ovno2::com {

// A new object with one reference, the caller's. Throws std::bad_alloc.
_covNo2* createComponent();

}  // namespace ovno2::com
