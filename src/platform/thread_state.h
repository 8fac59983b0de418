// All module state, one set per thread.
//
// Each module declares one `State` struct with a `static constexpr StateSlot slot`;
// `threadState().get<State>()` hands it out and creates it on first use. Two threads share nothing. A test
// resets everything with `resetThreadState`. The one state that declares `isAlwaysThere` needs no memory.
// States are destroyed in reverse slot order, so that a state may use those of lower slots in its destructor.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <new>

#include "platform_native/thread_value.h"

namespace ovno2 {

// From the bottom of the house up.
enum class StateSlot : std::size_t {
    platform,
    openFiles,
    logFront,
    files,
    processes,
    log,
    dates,
    library,
    libraryStart,
    discovery,
    currentPhone,
    session,
    devices,
    media,
    content,
    contacts,
    contactsWriting,
    calendar,
    messages,
    phoneFiles,
    settings,
    count
};

class ThreadState {
  public:
    ThreadState() = default;
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;
    ~ThreadState() { clear(); }

    template <class State>
    State& get() {
        Holder& holder = states_[static_cast<std::size_t>(State::slot)];
        if (!holder.state) {
            if constexpr (requires { State::isAlwaysThere; }) {
                static_assert(sizeof(State) <= sizeof roomOfOne_);
                holder.state = new (roomOfOne_) State();
                holder.destroy = [](void* state) { std::destroy_at(static_cast<State*>(state)); };
            } else {
                holder.state = new State();
                holder.destroy = [](void* state) { delete static_cast<State*>(state); };
            }
        }
        return *static_cast<State*>(holder.state);
    }

    // Null while nobody has asked for it.
    template <class State>
    State* find() const {
        return static_cast<State*>(states_[static_cast<std::size_t>(State::slot)].state);
    }

    void clear() {
        for (std::size_t i = states_.size(); i-- > 0;) {
            Holder holder = states_[i];
            states_[i] = {};
            if (holder.state) holder.destroy(holder.state);
        }
    }

  private:
    struct Holder {
        void* state = nullptr;
        void (*destroy)(void*) = nullptr;
    };
    std::array<Holder, static_cast<std::size_t>(StateSlot::count)> states_{};
    alignas(std::max_align_t) std::byte roomOfOne_[96];
};

// The calling thread's state, null when it has none.
inline ThreadState* existingThreadState() {
    return static_cast<ThreadState*>(platform::threadValue());
}

namespace detail {
ThreadState& makeThreadState();
}

// The calling thread's state; lives until the thread ends (see platform/thread_storage.h).
inline ThreadState& threadState() {
    ThreadState* const state = existingThreadState();
    return state ? *state : detail::makeThreadState();
}

// Forgets everything the calling thread knows.
inline void resetThreadState() {
    threadState().clear();
}

template <class State>
State& stateOf() {
    return threadState().get<State>();
}

// The calling thread's state of a module, null while it has none: for readers that must not need memory.
template <class State>
State* existingStateOf() {
    const ThreadState* const state = existingThreadState();
    return state ? state->find<State>() : nullptr;
}

}  // namespace ovno2
