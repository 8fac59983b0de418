// What shells need to complete a command line: commands, options, words that options take, files and folders.
#pragma once

#include "host/manual/command_text.h"

namespace ovno2::host {

// Each is the text of a file that the shell loads; see the folders of packaging/CMakeLists.txt.
std::string bashCompletion(const CommandText& program);
std::string zshCompletion(const CommandText& program);
std::string fishCompletion(const CommandText& program);

}  // namespace ovno2::host
