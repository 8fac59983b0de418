#include "platform/thread_state.h"

namespace ovno2 {

ThreadState& detail::makeThreadState() {
    platform::ThreadStorage& storage = platform::threadStorage();
    static_assert(sizeof(ThreadState) <= sizeof storage.room);
    storage.value = new (storage.room) ThreadState();
    storage.release = [](void* value) { std::destroy_at(static_cast<ThreadState*>(value)); };
    return *static_cast<ThreadState*>(storage.value);
}

}  // namespace ovno2
