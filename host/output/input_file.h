// A file that its user names for reading.
#pragma once

#include <string>

namespace ovno2::host {

// The bytes of a file; "-" is standard input. Throws CommandFailure for one that cannot be read.
std::string readInputFile(const std::string& name);

// What messages call it.
std::string inputName(const std::string& name);

}  // namespace ovno2::host
