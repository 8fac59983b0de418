// Windows paths on the portable machine.
//
// "Z:\" is the system's root. Another drive is the folder drives/<letter> of the machine's profile folder; a
// drive without that folder does not exist. "\" and "/" separate, a "\\?\" in front is skipped, and a path
// without a drive is the system's own: absolute behind a separator, else below the current folder.
#pragma once

#include <filesystem>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

std::filesystem::path nativePath(const Machine& machine, TextView path);
// The drive form of an absolute native path.
Text windowsPath(const Machine& machine, const std::filesystem::path& path);

}  // namespace ovno2::platform::portable
