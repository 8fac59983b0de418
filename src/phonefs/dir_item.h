// One entry of a phone folder, the host's directory record.
#pragma once

#include "base/types.h"

namespace ovno2 {

inline constexpr Long dirItemChangeable = 1;
inline constexpr Long dirItemSpecial = 2;  // the library's attribute bit 0x2000
inline constexpr Long dirItemFolder = 8;

struct DirItem {
    Text DisplayName;  // a folder's label or name in square brackets, a file's name
    Text Name;
    Text FullName;   // a folder's name; a file's path from the drive on, separated by "\"
    Long Size = 0;   // bytes; files only
    Text DateText;   // local time in the user's form, midnight omitted; files only
    Long Flags = 0;  // the bits above
};

}  // namespace ovno2
