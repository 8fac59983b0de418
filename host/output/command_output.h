// How the commands write and how they fail: results to standard output, everything else to standard error.
#pragma once

#include <string_view>

#include "host/output/table.h"

namespace ovno2::host {

// Ends the command with an exit status; the message, unless it is empty, goes to the user.
struct CommandFailure {
    int status;
    std::string message;
};

// What a person reads: control characters become visible pictures; a line's end and a tab stay.
void write(std::string_view text);
void note(const std::string& text);        // a line of its own
void notePrompt(const std::string& text);  // the beginning of a line: what the user is asked
// A note that the command is as good without; `beQuiet` silences them.
void remark(const std::string& text);
void beQuiet();
bool isQuiet();
// Bytes as they are.
void writeData(std::string_view bytes);

inline constexpr const char* moreInAFile = "a wider terminal, a file or --format json";

// `width` counts where there is no terminal, 0 = in full; `where` tells what shows the columns that found no
// room.
void writeTable(const Table& table, std::size_t width = 0, const char* where = moreInAFile);

}  // namespace ovno2::host
