// The value types that every layer speaks.
//
// `Text` is UTF-16 and may hold NUL characters. A "byte string" is a `Text` in which each character stands
// for one byte, taken through the system's ANSI code page (see platform/code_pages.h). Results and handles
// are 32-bit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ovno2 {

using Text = std::u16string;
using TextView = std::u16string_view;

using Long = std::int32_t;      // a signed 32-bit number, and every result code
using Single = float;           // version numbers and seconds since midnight
using DateValue = double;       // days since 30 December 1899, the time of day as fraction; 0 is "date zero"
using Address = std::uint32_t;  // an address inside a library record; always below 4 GiB

}  // namespace ovno2
