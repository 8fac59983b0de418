// Skip and continue: the system's error model, in one place.
//
// `attempt` runs one step, one assignment or call, and never throws. When the step fails, the failure becomes
// the thread's pending failure and the step's target keeps the value it had, since the assignment was not
// reached; the routine goes on with its next step. The result tells which failure it was, for callers that
// look.
#pragma once

#include <new>
#include <stdexcept>
#include <utility>

#include "core/log_front.h"

namespace ovno2 {

inline FailureNumber raisePending(FailureNumber number, Text description) noexcept {
    if (number == outOfMemory) ++stateOf<LogFront>().memoryFailures;
    PendingFailure& pending = pendingFailure();
    pending.number = number;
    pending.description = std::move(description);
    return number;
}

// For failures where not even a description can be built; the writer then takes the number's own description.
inline FailureNumber raisePending(FailureNumber number) noexcept {
    return raisePending(number, Text());
}

template <class Step>
FailureNumber attempt(Step&& step) noexcept {
    try {
        std::forward<Step>(step)();
        return noFailure;
    } catch (RuntimeFailure& failure) {
        Text description;
        try {
            description = failure.description();
        } catch (...) {
            return raisePending(failure.number());
        }
        return raisePending(failure.number(), std::move(description));
    } catch (const std::bad_alloc&) {
        return raisePending(outOfMemory);
    } catch (const std::length_error&) {
        return raisePending(outOfMemory);
    } catch (const std::out_of_range&) {
        return raisePending(subscriptOutOfRange);
    } catch (...) {
        return raisePending(internalError);
    }
}

// Whether any step on this thread has found no memory since this was made, log lines or not: for routines
// that must not pass on what such steps have left incomplete.
class MemoryWatch {
  public:
    bool ranShort() const { return stateOf<LogFront>().memoryFailures != before_; }
    // Throws RuntimeFailure 7 when it has.
    void check() const {
        if (ranShort()) throw RuntimeFailure(outOfMemory);
    }

  private:
    std::uint32_t before_ = stateOf<LogFront>().memoryFailures;
};

// Turns a failure number of the seam into a failure of the step.
inline void require(FailureNumber number) {
    if (number != noFailure) throw RuntimeFailure(number);
}

}  // namespace ovno2
