#include "host/output/command_output.h"

#include <cstdio>

#include "host/output/console.h"
#include "host/output/harmless.h"

namespace ovno2::host {

namespace {

bool quiet = false;

}  // namespace

void writeData(std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void write(std::string_view text) {
    if (isHarmless(text))
        writeData(text);
    else
        writeData(harmless(text));
}

void note(const std::string& text) {
    std::fflush(stdout);
    const std::string line = harmless(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void notePrompt(const std::string& text) {
    std::fflush(stdout);
    const std::string harmlessText = harmless(text);
    std::fwrite(harmlessText.data(), 1, harmlessText.size(), stderr);
    std::fflush(stderr);
}

void remark(const std::string& text) {
    if (!quiet) note(text);
}

void beQuiet() {
    quiet = true;
}

bool isQuiet() {
    return quiet;
}

void writeTable(const Table& table, std::size_t width, const char* where) {
    std::size_t leftOut = 0;
    write(table.render(console::outputIsTerminal() ? console::terminalWidth() : width, &leftOut));
    if (leftOut != 0)
        remark("(" + std::to_string(leftOut) + " more " + (leftOut == 1 ? "column does" : "columns do") +
               " not fit; " + where + " shows everything.)");
}

}  // namespace ovno2::host
