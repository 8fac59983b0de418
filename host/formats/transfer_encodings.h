// Bytes written as harmless characters: base64 and quoted-printable.
//
// Decoding never fails: what the encoding does not allow is passed over, and the caller is told.
#pragma once

#include <string>
#include <string_view>

namespace ovno2::host {

// `whole` becomes false when there are other characters than base64's and blanks, or the end is missing.
std::string fromBase64(std::string_view text, bool& whole);
std::string toBase64(std::string_view bytes);  // one line

// A "=" without two hexadecimal digits behind it stays.
std::string fromQuotedPrintable(std::string_view text);

}  // namespace ovno2::host
