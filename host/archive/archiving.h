// Saving a phone, for commands that go on with what was saved.
#pragma once

#include <string>
#include <vector>

#include "host/command/command.h"

namespace ovno2::host {

struct ArchiveOptions {
    std::string folder;
    std::vector<std::string> only;  // kinds; empty = all
    bool dryRun = false;
};

// Saves the phone that the context names in a folder, as `ovphone archive` does, and tells nothing but how
// far it is. Gives what did not arrive, for people; UTF-8. Throws CommandFailure when it was broken off.
std::vector<std::string> savePhone(const Context& context, const ArchiveOptions& wanted);

}  // namespace ovno2::host
