// The terminal, the environment and the file system as the host's programs use them; everything in UTF-8.
//
// One source a platform (console_posix.cpp, console_win32.cpp).
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace ovno2::host::console {

// The program's arguments, its own name first. Also makes the terminal show UTF-8.
std::vector<std::string> arguments(int argc, char** argv);

// Lets memory that is allocated from now on come in large pages where the system has them. A phone book of
// 10,000 contacts takes 12,000 page faults otherwise, an eighth of the time that it takes to read it.
void useLargePages();

bool outputIsTerminal();
bool errorIsTerminal();

// Cells of a line of the terminal: COLUMNS of the environment, else what the terminal says, else 80.
std::size_t terminalWidth();

void setEnvironment(const std::string& name, const std::string& value);
bool hasEnvironment(const std::string& name);

// The folder that holds the running program.
std::filesystem::path programFolder();

std::filesystem::path userFolder();

// Where the host keeps what it has to remember for the user; may not exist.
std::filesystem::path stateFolder();

std::filesystem::path pathOf(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);

// A new folder that only the user can read, in the system's folder for temporary files.
std::filesystem::path makeTemporaryFolder();

}  // namespace ovno2::host::console
