#include "host/output/command_output.h"

#include <cstdio>

#include "host/output/console.h"

namespace ovno2::host {

void write(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void note(const std::string& text) {
    std::fflush(stdout);
    std::fputs((text + "\n").c_str(), stderr);
}

void writeTable(const Table& table, std::size_t width, const char* where) {
    std::size_t leftOut = 0;
    write(table.render(console::outputIsTerminal() ? console::terminalWidth() : width, &leftOut));
    if (leftOut != 0)
        note("(" + std::to_string(leftOut) + " more " + (leftOut == 1 ? "column does" : "columns do") +
             " not fit; " + where + " shows everything.)");
}

}  // namespace ovno2::host
