// Paths on the phone as people type them: "E:/Images/*.jpg", "Memory card/Images", "/".
//
// "/" and "\" separate; a separator in front, "root/" in front and empty parts are left out. "*" stands for
// any characters of a part, "?" for one. Names are compared without regard to case, as phones do.
#pragma once

#include <string>
#include <vector>

#include "host/output/text.h"

namespace ovno2::host {

// The parts of a typed path; none for the phone itself. Throws CommandFailure (wrong usage) for a path that
// leads through "." or ".." or a drive without a separator behind it ("E:Images").
std::vector<Text> partsOfPhonePath(const std::string& typed);

bool hasWildcard(TextView part);
bool matchesWildcard(TextView pattern, TextView name);

// Whether the library can be given an entry of this name: it stands between separators in a path.
bool canStandInAPath(TextView name);

}  // namespace ovno2::host
