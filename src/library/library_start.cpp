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
    const Answer answer = CONAInitialize.tried(version, u"Nokia");
    if (answer.succeeded()) ++stateOf<State>().startCount;
    return answer;
}

Long startCount() {
    return stateOf<State>().startCount;
}

void undoStarts() {
    for (Long& count = stateOf<State>().startCount; count >= 1; --count)
        CONAUninitialize.tried(0);
}

Long recordedContentVersion() {
    return stateOf<State>().contentVersion;
}

void recordContentVersion(Long version) {
    stateOf<State>().contentVersion = version;
}

}  // namespace ovno2::library
