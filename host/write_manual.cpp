// write_manual FOLDER VERSION DATE: writes the manual pages (FOLDER/man1) and the completions
// (FOLDER/completions) of the programs, from the same texts as their help. Runs while the project is built.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "host/all_commands.h"
#include "host/manual/completions.h"
#include "host/manual/man_page.h"
#include "host/viewer/viewer_options.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

void write(const fs::path& file, const std::string& text) {
    std::ofstream stream;
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream.open(file, std::ios::binary);
    stream << text;
    stream.close();
}

void writeCompletions(const fs::path& folder, const CommandText& program) {
    write(folder / (program.name + ".bash"), bashCompletion(program));
    write(folder / ("_" + program.name), zshCompletion(program));
    write(folder / (program.name + ".fish"), fishCompletion(program));
}

void writeManual(const fs::path& folder, const ManualEdition& edition) {
    Context context;
    ViewerOptions viewerOptions;
    const CommandText program = describe(*makeCommandLine(context, allCommands));
    const CommandText viewer = describe(*makeViewerCommandLine(viewerOptions));
    const fs::path pages = folder / "man1", completions = folder / "completions";
    for (const fs::path& one : {pages, completions}) {
        fs::remove_all(one);  // with what former commands have left there
        fs::create_directories(one);
    }
    write(pages / "ovphone.1", programPage(program, edition, {viewer.name}));
    write(pages / "ovviewer.1", programPage(viewer, edition, {program.name}));
    for (const CommandText& command : program.commands)
        write(pages / (pageName(command) + ".1"), commandPage(command, program, edition));
    writeCompletions(completions, program);
    writeCompletions(completions, viewer);
}

}  // namespace

}  // namespace ovno2::host

int main(int argc, char** argv) {
    try {
        if (argc != 4) throw std::runtime_error("usage: write_manual FOLDER VERSION DATE");
        ovno2::host::writeManual(argv[1], {argv[2], argv[3]});
    } catch (const std::exception& error) {
        std::cerr << "write_manual: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
