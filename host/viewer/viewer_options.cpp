#include "host/viewer/viewer_options.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

constexpr const char* examples = R"(Examples:
  ovviewer                              every line as it comes, until Ctrl-C or the window's end
  ovviewer --level 5 --save read.log    with the details, and into a file as well
  ovviewer --routine GetContacts        only while that routine works
  ovviewer | less                       page by page

Exit status: 0 done, 1 failed or another viewer is running, 2 wrong usage.)";

}  // namespace

std::unique_ptr<CLI::App> makeViewerCommandLine(ViewerOptions& options) {
    auto program = std::make_unique<CLI::App>(
        "Shows the module's diagnostic log live, and switches it on meanwhile.", "ovviewer");
    CLI::App& app = *program;
    app.footer(examples);
    app.allow_windows_style_options(false);  // a path may begin with "/"
    app.add_option("--routine", options.routine,
                   "only lines while this routine is open, with those of the routines it calls")
        ->type_name("NAME");
    app.add_option_function<Long>(
           "--level", [&options](Long level) { options.level = level; },
           "how much programs that start now send: 0 (ordinary lines only) to 15")
        ->type_name("N")
        ->check(CLI::Range(0, 15).description(""));
    app.add_option_function<std::string>(
           "--mode",
           [&options](const std::string& mode) {
               options.mode = mode == "chunks" ? LogMode::chunks : LogMode::shared;
           },
           "how lines come: eight characters a message, or through shared memory")
        ->type_name("chunks|shared")
        ->default_str("shared")
        ->check(CLI::IsMember({"chunks", "shared"}).description(""));
    app.add_option("--save", options.saveFile, "add the lines that are shown to this file as well")
        ->type_name("FILE");
    return program;
}

std::optional<ViewerOptions> parseViewerOptions(const std::vector<std::string>& arguments,
                                                CommandLineAnswer& answer) {
    ViewerOptions options;
    const std::unique_ptr<CLI::App> app = makeViewerCommandLine(options);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());  // as the parser takes them
    if (!reversed.empty()) reversed.pop_back();
    try {
        app->parse(reversed);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output, errors;
        if (app->exit(error, output, errors) == 0)
            answer = {output.str(), done};
        else
            answer = {
                std::string("ovviewer: ") + error.what() + "\n\"ovviewer --help\" explains the options.\n",
                wrongUsage};
        return std::nullopt;
    }
    return options;
}

}  // namespace ovno2::host
