// Lets the allocations of a test program fail, one after the other. Whoever uses it includes
// failing_allocator.h in one source of the program.
//
// Only allocations that this program itself asks for count; those of the libraries below it go through.
#pragma once

namespace ovno2 {

inline thread_local long allocationsLeft = -1;  // until the one that fails; -1 = none does
inline thread_local bool allocationsFailOnwards = false;

namespace detail {

#ifdef _WIN32
// Every library has an allocator of its own there.
inline bool isOfProgram(const void*) {
    return true;
}
#else
extern "C" char __executable_start, etext;

inline bool isOfProgram(const void* code) {
    return code >= &__executable_start && code < &etext;
}
#endif

inline bool allocationFails(const void* caller) {
    if (allocationsLeft < 0 || !isOfProgram(caller)) return false;
    if (allocationsLeft > 0) {
        --allocationsLeft;
        return false;
    }
    if (!allocationsFailOnwards) allocationsLeft = -1;
    return true;
}

}  // namespace detail

// Runs `step` with its allocation number `n`, counted from 0, failing once or from then on. True when it had
// so many.
template <class Step>
bool failAllocation(long n, bool onwards, Step&& step) {
    allocationsFailOnwards = onwards;
    allocationsLeft = n;
    step();
    const bool failed = onwards ? allocationsLeft == 0 : allocationsLeft < 0;
    allocationsLeft = -1;
    return failed;
}

// Runs `step` with its first allocation failing, then with its second, and so on until none fails; then again
// with every allocation from the n-th on failing. `check` is called after each run with its n.
template <class Step, class Check>
void failEveryAllocation(Step&& step, Check&& check) {
    for (const bool onwards : {false, true}) {
        bool failed = true;
        for (long n = 0; failed; ++n) {
            failed = failAllocation(n, onwards, step);
            check(n);
        }
    }
}

}  // namespace ovno2
