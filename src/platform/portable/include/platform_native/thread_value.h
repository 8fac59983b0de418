// What hangs on the calling thread (platform/thread_storage.h), null for nothing: read in place, because
// every routine asks for it many times.
#pragma once

#include "platform/thread_storage.h"

namespace ovno2::platform {

namespace portable {
// Plain memory, so that what is destroyed after the thread's end may still ask and finds nothing.
extern constinit thread_local ThreadStorage currentStorage;
}  // namespace portable

inline void* threadValue() {
    return portable::currentStorage.value;
}

}  // namespace ovno2::platform
