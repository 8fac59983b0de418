// What a long operation does on its way, so that the host's windows live on.
#pragma once

#include "core/attempt.h"
#include "core/current_platform.h"

namespace ovno2 {

// Lets the host's pending window messages run, which may call any member of the module; nothing is thrown.
inline void processPendingMessages() noexcept {
    attempt([] { currentPlatform().windows().processPendingMessages(); });
}

}  // namespace ovno2
