// UTF-8 of the images and the control interface against the UTF-16 of the library's calls.
//
// No state. What cannot be expressed (a lone surrogate, a broken byte sequence) becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace ovno2::simulator {

std::u16string toUtf16(std::string_view utf8);
bool appendUtf16(std::u16string& text, std::string_view utf8);  // false when something was replaced
std::string toUtf8(std::u16string_view utf16);

// The same into memory with room for as many units as there are bytes; returns the end. `valid` becomes false
// when something was replaced.
char16_t* widenUtf8(std::string_view utf8, char16_t* out, bool& valid);

// Upper-case hexadecimal digits, two a byte; and back. A text that is not such digits gives false.
std::string toHex(std::string_view bytes);
bool fromHex(std::string_view digits, std::string& bytes);

// A number as upper-case hexadecimal digits without leading zeros.
std::string hexNumber(unsigned long number);

}  // namespace ovno2::simulator
