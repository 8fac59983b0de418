// The text of a message out of the library's record.
#pragma once

#include "library/library_records.h"

namespace ovno2::Data {

// Data formats, the low four bits of a message's info field.
inline constexpr library::Word formatMask = 0xF;
inline constexpr library::Word formatText = 1;   // UTF-16
inline constexpr library::Word formatBytes = 2;  // 8-bit data

// Without control characters at its end, as long as two characters remain. Empty for data that cannot be read
// and for other formats. Throws RuntimeFailure 7 only.
Text messageText(const library::MessageRecord& record);

}  // namespace ovno2::Data
