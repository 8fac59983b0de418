// Secrets do not stay in memory after use.
#pragma once

#include "base/types.h"

namespace ovno2 {

// Overwrites `length` characters, which the compiler may not leave out.
template <class Character>
void wipe(Character* text, std::size_t length) noexcept {
    volatile Character* character = text;
    for (; length != 0; --length)
        *character++ = 0;
}

}  // namespace ovno2
