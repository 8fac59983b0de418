// One untyped slot per thread, from which the core's thread state hangs.
//
// The platform owns it because the end of a thread is the platform's to notice: `release` is called with
// `value` when the thread ends, or when the module is unloaded from the thread that unloads it.
#pragma once

namespace ovno2::platform {

struct ThreadStorage {
    void* value = nullptr;
    void (*release)(void*) = nullptr;
};

ThreadStorage& threadStorage();

}  // namespace ovno2::platform
