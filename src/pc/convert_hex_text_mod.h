// Text as hexadecimal digits.
//
// Keeps no state. The message reader calls it for binary messages. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::ConvertHexTextMod {

// Two upper-case digits for the code of each character. On double-byte code pages a character of two bytes
// gives its Unicode value when that fits a byte, else two blanks.
Text ConvertTextToHexText(TextView text);

}  // namespace ovno2::ConvertHexTextMod
