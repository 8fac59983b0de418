// The class factory of covNo2. One object serves the whole process; references to it keep the DLL loaded.
#pragma once

#include "com/interface.h"

namespace ovno2::com {

IClassFactory& classFactory();

}  // namespace ovno2::com
