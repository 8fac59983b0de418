// One untyped slot per thread, from which the core's thread state hangs.
//
// The platform owns it because the end of a thread is the platform's to notice: `release` is called with
// `value` when the thread ends, or when the module is unloaded from the thread that unloads it.
#pragma once

#include <cstddef>

namespace ovno2::platform {

struct ThreadStorage {
    void* value = nullptr;
    void (*release)(void*) = nullptr;
    // Room for the value, so that there is no thread without one for want of memory.
    alignas(std::max_align_t) std::byte room[512] = {};
};

ThreadStorage& threadStorage();

}  // namespace ovno2::platform
