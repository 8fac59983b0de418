// Memory that is not the module's own: guarded reads, and blocks whose address fits a library record.
#pragma once

#include <cstddef>

#include "base/types.h"

namespace ovno2::platform {

class Memory {
  public:
    virtual ~Memory() = default;
    // Copies `size` bytes; false, with `to` in an unspecified state, when any of them cannot be read. Never
    // faults.
    virtual bool read(const void* from, std::size_t size, void* to) = 0;
    // True when all of `size` bytes can be read now. Looks at every page, so a wild size ends at the first
    // gap.
    virtual bool readable(const void* from, std::size_t size) = 0;
    // Copies the UTF-16 units before the terminator, `limit` of them when there is none among them; false,
    // and an empty text, when a unit cannot be read before one is found. Never faults; throws std::bad_alloc.
    virtual bool readText(const char16_t* from, std::size_t limit, Text& to) = 0;
    // A zeroed block below 4 GiB, null when there is none left; the caller returns it with `freeLow`.
    virtual void* allocateLow(std::size_t size) = 0;
    virtual void freeLow(void* block, std::size_t size) = 0;
};

}  // namespace ovno2::platform
