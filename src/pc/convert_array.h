// Byte arrays as byte strings and back: pictures, and the bytes of a file on its way to the phone.
//
// Keeps no state. Nothing here throws.
#pragma once

#include <cstdint>

#include "base/host_array.h"
#include "base/types.h"

namespace ovno2::ConvertArray {

using ByteArray = HostArray<std::uint8_t>;

// One character for each element from the lower bound to `lastIndex` (0 = the array's upper bound); NUL for
// indexes behind the array's end. Empty for an array without elements or a `lastIndex` below the lower bound.
Text ConvertByteArrayToString(const ByteArray& bytes, Long lastIndex = 0);

// `bytes` gets the indexes 0 to length - 1 with the codes of the characters; best fits count, and a character
// that takes two bytes leaves 0. An empty text, or one too large to be held, leaves the array as it was.
void ConvertStringToByteArray(TextView text, ByteArray& bytes);

}  // namespace ovno2::ConvertArray
