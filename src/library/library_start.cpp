#include "library/library_start.h"

namespace ovno2::library {

namespace {

struct State {
    static constexpr StateSlot slot = StateSlot::libraryStart;
    Long startCount = 0;
    Long contentVersion = 0;
};

}  // namespace

Answer start(Word version) {
    // A start that could not be counted would never be undone.
    State* state = nullptr;
    const FailureNumber failure = attempt([&] { state = &stateOf<State>(); });
    if (failure != noFailure) return {.failure = failure};
    const Answer answer = CONAInitialize.tried(version, u"Nokia");
    if (answer.succeeded()) ++state->startCount;
    return answer;
}

Long startCount() noexcept {
    const State* const state = existingStateOf<State>();
    return state ? state->startCount : 0;
}

void undoStarts() noexcept {
    State* const state = existingStateOf<State>();
    if (!state) return;
    for (; state->startCount >= 1; --state->startCount)
        CONAUninitialize.tried(0);
}

Long recordedContentVersion() noexcept {
    const State* const state = existingStateOf<State>();
    return state ? state->contentVersion : 0;
}

void recordContentVersion(Long version) {
    stateOf<State>().contentVersion = version;
}

}  // namespace ovno2::library
