// The command line of `ovphone`: understands it, runs the command that it asks for, and tells the user what
// went wrong.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/command/command.h"

namespace ovno2::host {

using RegisterCommand = void(CLI::App& app, Context& context);

// The program with its commands, their options and help texts; the help shows the commands in the order of
// `commands`. `context` must live as long.
std::unique_ptr<CLI::App> makeCommandLine(Context& context, std::span<RegisterCommand* const> commands);

// `arguments` begins with the program's name. Gives the exit status. The command's result goes to standard
// output, everything else to standard error.
int runCommandLine(const std::vector<std::string>& arguments, std::span<RegisterCommand* const> commands);

}  // namespace ovno2::host
