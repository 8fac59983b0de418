// Texts in lines for people.
#pragma once

#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

// A text in lines of at most `width` cells, parted at blanks where it has some; its own lines stay lines.
std::vector<Text> wrapped(TextView text, std::size_t width);

}  // namespace ovno2::host
