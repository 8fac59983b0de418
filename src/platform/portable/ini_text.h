// Profile (.ini) texts: one value out of the sections of a file.
#pragma once

#include "base/types.h"

namespace ovno2::platform::portable {

// The value of `key` in the first section of that name, names compared without regard to case; empty when
// there is none. Blanks around it are removed, and then the quotes (single or double) that enclose it.
Text iniValue(TextView contents, TextView section, TextView key);

// A profile file's bytes as text: UTF-16 or UTF-8 when marked so, else empty and false, and the caller takes
// the ANSI code page.
bool decodeMarked(std::string_view bytes, Text& text);

}  // namespace ovno2::platform::portable
