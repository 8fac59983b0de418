// Four UTF-16 units looked at together in one word.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovno2 {

using UnitBlock = std::uint64_t;
inline constexpr std::ptrdiff_t unitsPerBlock = 4;

constexpr UnitBlock inEachUnit(std::uint16_t value) {
    return value * UnitBlock{0x0001000100010001};
}

// Whether one of the four is `unit`.
constexpr bool hasUnit(UnitBlock block, std::uint16_t unit) {
    const UnitBlock difference = block ^ inEachUnit(unit);
    return ((difference - inEachUnit(1)) & ~difference & inEachUnit(0x8000)) != 0;
}

}  // namespace ovno2
