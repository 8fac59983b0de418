#include "support/thread_state.h"

#include "platform/thread_storage.h"

namespace ovno2 {

ThreadState* existingThreadState() {
    return static_cast<ThreadState*>(platform::threadStorage().value);
}

ThreadState& threadState() {
    platform::ThreadStorage& storage = platform::threadStorage();
    if (!storage.value) {
        storage.value = new ThreadState();
        storage.release = [](void* value) { delete static_cast<ThreadState*>(value); };
    }
    return *static_cast<ThreadState*>(storage.value);
}

}  // namespace ovno2
