// UTF-8 against the module's UTF-16, for what is UTF-8 natively: paths, the portable machine's files,
// terminals.
#pragma once

#include <string>

#include "base/types.h"

namespace ovno2 {

// Each broken sequence becomes U+FFFD.
Text fromUtf8(std::string_view bytes);

// The same; false when a sequence was broken.
bool readUtf8(std::string_view bytes, Text& text);

// An unpaired surrogate becomes U+FFFD.
std::string toUtf8(TextView text);

// The same at the end of `bytes`.
void appendUtf8(std::string& bytes, TextView text);

// UTF-16 in little-endian bytes; an odd last byte is left out.
Text fromUtf16Bytes(std::string_view bytes);
std::string toUtf16Bytes(TextView text);

// True when the text is well-formed UTF-16, so that it survives UTF-8.
bool isWellFormed(TextView text);

}  // namespace ovno2
