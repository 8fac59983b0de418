// Texts in the system's ANSI code page, as files, classic calls and the log carry them.
//
// Keeps no state; the page itself belongs to the calling thread's platform.
#pragma once

#include <cstdint>
#include <string>

#include "base/types.h"

namespace ovno2 {

// Text in the ANSI code page; a character the page does not hold becomes its best fit or "?".
std::string toAnsi(TextView text);

// Bytes of the ANSI code page as text; bytes the page does not define become the character of the same code.
Text fromAnsi(std::string_view bytes);

// The code of one character: its byte, or that of its best fit, or that of "?". True when the page holds the
// character itself in one byte, so that `fromAnsi` gives it back.
bool ansiCode(char16_t character, std::uint8_t& code);

// What a text becomes when it passes the code page once.
Text throughAnsi(TextView text);

}  // namespace ovno2
