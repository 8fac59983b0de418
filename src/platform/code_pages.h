// The system's ANSI code page and its console code page.
//
// Single-byte pages are one table of 256 characters; on double-byte pages a character takes one or two bytes.
#pragma once

#include <string>

#include "base/types.h"

namespace ovno2::platform {

class CodePages {
  public:
    virtual ~CodePages() = default;
    virtual std::uint32_t ansi() = 0;  // code page number, such as 1252
    // Bytes of the ANSI code page as text; a byte the page does not define becomes the control character of
    // its code.
    virtual Text fromAnsi(std::string_view bytes) = 0;
    // Text in the ANSI code page; a character the page does not hold becomes its best fit or "?".
    virtual std::string toAnsi(TextView text) = 0;
    // For single-byte pages: the character of each of the 256 codes. Null on double-byte pages. Owned by the
    // platform, valid for the platform's lifetime.
    virtual const char16_t* singleByteTable() = 0;
};

}  // namespace ovno2::platform
