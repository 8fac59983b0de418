// Texts in the library's memory, as the content areas and the phone's files read them.
#pragma once

#include "base/types.h"

namespace ovno2::library {

// The zero-terminated text at `pointer`; empty for pointers that lead nowhere (-1 and up to 256 among them)
// and for texts of 16,383 bytes or more in the system's code page. Throws RuntimeFailure 7 only.
Text GetStringFromPointer(Address pointer);
// The same into a text of the caller's, which keeps its room from one call to the next.
void GetStringFromPointer(Address pointer, Text& text);

}  // namespace ovno2::library
