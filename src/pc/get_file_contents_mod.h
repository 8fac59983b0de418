// Encoding detection for a file that was read as a byte string.
//
// Keeps no state. The file readers call it for every file they decode. Nothing here throws.
#pragma once

#include <cstdint>
#include <span>

#include "base/types.h"

namespace ovno2::GetFileContentsMod {

// What `ConvertFromUnicodeSub` found; the writer of files takes the same numbers.
inline constexpr Long ansiOrUtf8 = 0;
inline constexpr Long bigEndianWithMark = 2;
inline constexpr Long bigEndian = 3;  // told by its zero bytes
inline constexpr Long littleEndianWithMark = 4;

// Removes a byte-order mark and turns UTF-16 bytes into text; a UTF-8 mark goes, the UTF-8 itself stays. A
// text without a mark is UTF-16 when the characters 5, 7 ... 21 have codes of 8 or less. An odd last byte of
// UTF-16 is dropped. When there is no memory for the result, the text stays as it is.
Long ConvertFromUnicodeSub(Text& text);

// Whether it would change the byte string of these bytes; what it leaves alone need not become a text.
bool isEncodedText(std::span<const std::uint8_t> bytes);

}  // namespace ovno2::GetFileContentsMod
