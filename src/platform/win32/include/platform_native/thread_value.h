// What hangs on the calling thread (platform/thread_storage.h), null for nothing.
#pragma once

#include "platform/thread_storage.h"

namespace ovno2::platform {

inline void* threadValue() {
    return threadStorage().value;
}

}  // namespace ovno2::platform
