// The terminal, the environment and the file system as the host's programs use them; everything in UTF-8.
//
// One source a platform (console_posix.cpp, console_win32.cpp).
#pragma once

#include <chrono>
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

std::string environment(const std::string& name);                        // empty = not set
void setEnvironment(const std::string& name, const std::string& value);  // an empty value takes it away
bool hasEnvironment(const std::string& name);

// What clocks here showed at that time, by the rules for daylight time that held then as far as the system
// knows them.
std::chrono::local_seconds localTime(std::chrono::sys_seconds time);

// The folder that holds the running program.
std::filesystem::path programFolder();

std::filesystem::path userFolder();

// Where the host keeps what it has to remember for the user; may not exist.
std::filesystem::path stateFolder();

std::filesystem::path pathOf(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);

}  // namespace ovno2::host::console
