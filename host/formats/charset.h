// Texts of files in the character sets that phones and programs write.
#pragma once

#include <string>
#include <string_view>

#include "host/output/text.h"

namespace ovno2::host {

// Bytes in a character set, by its registered name ("ISO-8859-2", "windows-1251", "Shift_JIS"; letter case
// does not count), as text; broken bytes become U+FFFD. False for a set that is not known here.
bool fromCharset(std::string_view bytes, std::string_view charset, Text& text);

// Bytes that do not say what they are in: UTF-8 when they are that, else Windows-1252, in which old programs
// wrote.
Text fromUnknownCharset(std::string_view bytes);

// A whole file: UTF-16, with its mark or without one, becomes UTF-8; a mark goes; anything else stays as it
// is.
std::string withoutMark(std::string_view file);

}  // namespace ovno2::host
