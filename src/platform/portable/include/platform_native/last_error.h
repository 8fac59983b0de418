// The error value that the platform keeps for the last call into a library.
#pragma once

#include <cerrno>

#include "base/types.h"

namespace ovno2::platform {

inline void clearLastError() {
    errno = 0;
}
inline Long lastError() {
    return errno;
}

}  // namespace ovno2::platform
