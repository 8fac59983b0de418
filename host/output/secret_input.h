// A line of standard input that nobody may see or find again: typed at a terminal it is not shown.
//
// One source a platform (secret_input_posix.cpp, secret_input_win32.cpp). Nothing of the line is kept; the
// caller wipes its buffer. A signal that ends or stops the program meanwhile finds the terminal as it was.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace ovno2::host::console {

bool inputIsTerminal();

// Writes the prompt to standard error where input is a terminal. Gives the number of bytes in `line`, without
// the line's end, none when the input has ended. What does not fit is dropped.
std::optional<std::size_t> readSecret(const std::string& prompt, std::span<char> line);

}  // namespace ovno2::host::console
