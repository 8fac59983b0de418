// A restoration from beginning to end: the source is read, what the phone has is compared with it and told,
// and what is new goes there.
#pragma once

#include <string>
#include <vector>

#include "host/command/command.h"

namespace CLI {
class App;
}

namespace ovno2::host {

struct RestoreCommandOptions {
    std::vector<std::string> only;  // kinds; empty = all
    bool dryRun = false;
    bool force = false;
    bool messages = false;  // into the outbox
    bool withGone = false;
    bool acceptsLosses = false;
    bool verbose = false;
};

// All options of these but those that name phones.
void addRestoreOptions(CLI::App& command, Context& context, RestoreCommandOptions& options);

// `source` is a path; `called` is what the user calls it. The phone is the one that the context names. Throws
// CommandFailure when not all of it is on the phone at the end.
void restore(const Context& context, const std::string& source, const std::string& called,
             const RestoreCommandOptions& wanted);

}  // namespace ovno2::host
