// Which program a command line or a name means on the portable machine.
//
// A path names its file; "name" and "name.exe" are sought in the machine's registry (App Paths), beside the
// running program and in PATH. Two programs that every machine of the module's kind has are the machine's own
// when there is no such file: the command interpreter ("cmd", which hands its command to the system's shell)
// and "taskkill".
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

struct Command {
    std::filesystem::path program;       // empty: the machine's own taskkill
    std::vector<std::string> arguments;  // the first is the program's own name
    bool detached = false;               // started by the interpreter's "start": its output goes nowhere
};

// The file a program's name or path means; it need not be executable.
std::optional<std::filesystem::path> findProgram(Machine& machine, TextView name);

// Nothing when no program is found.
std::optional<Command> findCommand(Machine& machine, TextView commandLine);

// Ends processes of the user by executable name (/IM) or id (/PID), with /F at once; what it has to say.
std::string runTaskkill(const std::vector<std::string>& arguments);

}  // namespace ovno2::platform::portable
