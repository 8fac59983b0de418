// Replaces the program's allocator by one that fails on demand. Include it in one source of a test program.
#pragma once

#include <cstdlib>
#include <new>

#include "common/allocation_faults.h"

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
