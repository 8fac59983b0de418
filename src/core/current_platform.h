// The platform the calling thread works on: the native one unless a test or a host put another in its place.
#pragma once

#include "platform/platform.h"
#include "platform/thread_state.h"

namespace ovno2 {

struct PlatformState {
    static constexpr StateSlot slot = StateSlot::platform;
    platform::Platform* platform = nullptr;  // not owned; null = the native platform
};

inline platform::Platform& currentPlatform() {
    PlatformState& state = stateOf<PlatformState>();
    if (!state.platform) state.platform = &platform::nativePlatform();
    return *state.platform;
}

// `platform` must outlive the thread's use of the module.
inline void usePlatform(platform::Platform& platform) {
    stateOf<PlatformState>().platform = &platform;
}

}  // namespace ovno2
