// Replaces the program's allocator by one that fails on demand. Include it in one source of a test program.
//
// Only allocations that this program itself asks for count; those of the libraries below it go through.
#pragma once

#include <cstdlib>
#include <new>

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

// Runs `step` with its first allocation failing, then with its second, and so on until none fails; then again
// with every allocation from the n-th on failing. `check` is called after each run with its n.
template <class Step, class Check>
void failEveryAllocation(Step&& step, Check&& check) {
    for (const bool onwards : {false, true}) {
        allocationsFailOnwards = onwards;
        bool failed = true;
        for (long n = 0; failed; ++n) {
            allocationsLeft = n;
            step();
            failed = onwards ? allocationsLeft == 0 : allocationsLeft < 0;
            allocationsLeft = -1;
            check(n);
        }
    }
}

}  // namespace ovno2

// NOLINTBEGIN(cppcoreguidelines-no-malloc): this is the allocator
__attribute__((noinline)) void* operator new(std::size_t size) {
    void* const block =
        ovno2::detail::allocationFails(__builtin_return_address(0)) ? nullptr : std::malloc(size);
    if (!block) throw std::bad_alloc();
    return block;
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return ovno2::detail::allocationFails(__builtin_return_address(0)) ? nullptr : std::malloc(size);
}
__attribute__((noinline)) void operator delete(void* block) noexcept {
    std::free(block);
}
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
// NOLINTEND(cppcoreguidelines-no-malloc)
