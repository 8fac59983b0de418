#include "platform/thread_state.h"

namespace ovno2 {

ThreadState& detail::makeThreadState() {
    platform::ThreadStorage& storage = platform::threadStorage();
    storage.value = new ThreadState();
    storage.release = [](void* value) { delete static_cast<ThreadState*>(value); };
    return *static_cast<ThreadState*>(storage.value);
}

}  // namespace ovno2
