// Manual pages in the language of man(7).
#pragma once

#include <optional>

#include "host/manual/command_text.h"

namespace ovno2::host {

struct ManualEdition {
    std::string version;  // of the program
    std::string date;     // of the version, such as 2008-07-14
};

// The page of a program: its options and a line on each command, which has a page of its own. `seeAlso` names
// further pages of section 1.
std::string programPage(const CommandText& program, const ManualEdition& edition,
                        const std::vector<std::string>& seeAlso);

// The page of a command of `program`, with all commands below it.
std::string commandPage(const CommandText& command, const CommandText& program, const ManualEdition& edition);

// What the page of a command is called, such as "ovphone-contacts".
std::string pageName(const CommandText& command);

}  // namespace ovno2::host
