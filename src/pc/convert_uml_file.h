// Repairs text that arrived as UTF-8 but was taken one byte a character, and resolves what else phones write
// into long texts: decimal character references and backslash escapes.
//
// Keeps no state. For areas that read such texts; none of today's does, contacts keep their texts as they
// come.
#pragma once

#include "base/types.h"

namespace ovno2::ConvertUmlFile {

// Changes `text` in place; it never grows, and nothing is allocated. In this order:
//  - UTF-8 pairs whose first byte is C3, C2, C4 or C5, in four passes, each over what the one before has
//  left;
//  - references "&#" with at most three characters before the ";", as characters of the ANSI code page; the
//    first that is not of this form ends the step;
//  - control characters that `keepList` does not hold become blanks, at most 101 of each (empty = keep all);
//  - NUL characters that came in on the way go out again;
//  - a euro sign in three misread bytes, "\," and "\;".
// A pair or reference without a character in the code page stays.
void ConvertUmlauteFromFile(Text& text, TextView keepList = {});

}  // namespace ovno2::ConvertUmlFile
